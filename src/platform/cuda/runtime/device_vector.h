// Arrays on the device, and page-locked ones on the host.
#pragma once

#include <cstdint>
#include <span>

#include "base/memory.h"
#include "platform/cuda/runtime/device_memory.h"

namespace zel {

// Elements are trivially copyable; new memory is not cleared and never shrinks. Offsets and counts
// are not checked beyond the device's own means. All throw RuntimeException.
template <typename T>
class DeviceVector {
 public:
  DeviceVector() = default;
  explicit DeviceVector(std::uint64_t count) { resize(count); }
  // A copy of what the host has.
  explicit DeviceVector(std::span<const T> values) { assign(values); }

  [[nodiscard]] std::uint64_t size() const { return count; }
  [[nodiscard]] std::uint64_t capacity() const { return reserved; }
  [[nodiscard]] T* data() { return static_cast<T*>(memory.get()); }
  [[nodiscard]] const T* data() const { return static_cast<const T*>(memory.get()); }

  // True if the memory was replaced; then the old contents are gone.
  bool resize(std::uint64_t newCount) {
    const bool replaced = reserved < newCount;
    if (replaced) {
      release();
      memory = newDeviceMemory(roundedCapacity(newCount), sizeof(T));
      reserved = roundedCapacity(newCount);
    }
    count = newCount;
    return replaced;
  }

  void release() noexcept {
    memory.reset();
    reserved = 0;
    count = 0;
  }

  // True if the memory was replaced.
  bool assign(std::span<const T> values) {
    const bool replaced = resize(values.size());
    upload(values);
    return replaced;
  }

  void upload(std::span<const T> values, std::uint64_t offset = 0) {
    copyToDevice(data() + offset, values.data(), values.size_bytes());
  }
  void download(std::span<T> values, std::uint64_t offset = 0) const {
    copyToHost(values.data(), data() + offset, values.size_bytes());
  }
  void copyFrom(const DeviceVector& source, std::uint64_t targetOffset, std::uint64_t sourceOffset,
                std::uint64_t copied) {
    copyWithinDevice(data() + targetOffset, source.data() + sourceOffset, copied * sizeof(T));
  }
  void clear() { clearDeviceMemory(data(), count * sizeof(T)); }

 private:
  DeviceMemory memory;
  std::uint64_t reserved = 0;
  std::uint64_t count = 0;
};

// What the host reads back in every iteration.
template <typename T>
class PinnedVector {
 public:
  explicit PinnedVector(std::uint64_t count)
      : memory(newPinnedMemory(count, sizeof(T))), count(count) {}

  [[nodiscard]] std::span<T> span() { return {static_cast<T*>(memory.get()), count}; }
  [[nodiscard]] const T& operator[](std::uint64_t i) const {
    return static_cast<const T*>(memory.get())[i];
  }

 private:
  PinnedMemory memory;
  std::uint64_t count;
};

}  // namespace zel
