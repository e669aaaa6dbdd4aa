// Memory of the device, and page-locked memory of the host, which the device copies at full speed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zel {

struct DeviceMemoryRelease {
  void operator()(void* memory) const noexcept;
};
struct PinnedMemoryRelease {
  void operator()(void* memory) const noexcept;
};
using DeviceMemory = std::unique_ptr<void, DeviceMemoryRelease>;
using PinnedMemory = std::unique_ptr<void, PinnedMemoryRelease>;

// Memory for count elements of elementSize bytes, not cleared; none for a count of 0. All of these
// throw RuntimeException with the runtime's text.
DeviceMemory newDeviceMemory(std::uint64_t count, std::size_t elementSize);
PinnedMemory newPinnedMemory(std::uint64_t count, std::size_t elementSize);

// Nothing for 0 bytes. They return when the copy is made.
void copyToDevice(void* to, const void* from, std::size_t bytes);
void copyToHost(void* to, const void* from, std::size_t bytes);
// These are queued.
void copyWithinDevice(void* to, const void* from, std::size_t bytes);
void clearDeviceMemory(void* memory, std::size_t bytes);

}  // namespace zel
