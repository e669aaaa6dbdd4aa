// Launches on the device in software.
#pragma once

#include <cuda_runtime.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace zel::device {

inline constexpr unsigned mostThreads = 1024;  // of a block
inline constexpr std::size_t mostShared = std::size_t{48} << 10;

// Runs the kernel for every thread of the grid. The order of the blocks and, between two barriers,
// of a block's threads is drawn from the seed. Fails when the shape is none that a device takes,
// and when device code did what it must not:
// - write beside an allocation, or beside the shared memory that it was given;
// - fetch through a texture that is gone or of another type, beyond its end, or what the same
// launch
//   has written;
// - wait for a block whose threads are at another barrier.
// What it did is printed on the standard error, with the seed.
cudaError_t launch(const dim3& grid, const dim3& block, std::size_t sharedBytes,
                   const std::function<void()>& kernel);

// What the calling thread's last launch did that it must not have done, a line each.
const std::string& lastFaults();

// The next launch's; each takes the number behind it. It starts at the value of ZELSVM_DEVICE_SEED,
// or 1.
std::uint64_t nextSeed();
void setNextSeed(std::uint64_t seed);

}  // namespace zel::device
