// The devices that there are in software, and what tests make of them.
#pragma once

#include <cstdint>
#include <vector>

namespace zel {

// Few blocks at a time, so that small problems already take several passes over their elements.
struct DeviceTraits {
  int major = 8;
  int minor = 0;
  int multiprocessors = 3;
  int residentBlocks = 1;  // per multiprocessor
  std::uint64_t memoryBytes = std::uint64_t{4} << 30;
};

// While this lives there are these devices instead of the one that there is by default. One at a
// time, made while no other thread uses a device.
class DeviceSetup {
 public:
  explicit DeviceSetup(std::vector<DeviceTraits> devices);
  ~DeviceSetup();
  DeviceSetup(const DeviceSetup&) = delete;
  DeviceSetup& operator=(const DeviceSetup&) = delete;
};

const std::vector<DeviceTraits>& devices();

// Of the calling thread's current device.
const DeviceTraits& currentDevice();

}  // namespace zel
