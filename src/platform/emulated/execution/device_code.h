// The language of device code, as far as the kernels speak it. To be called by device threads only.
#pragma once

#include <math.h>
#include <vector_types.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <source_location>

#define __global__
#define __device__
#define __host__
#define __constant__
#define __shared__ static thread_local
#define __forceinline__ inline __attribute__((always_inline))
#define __launch_bounds__(threads)

// The threads of a block share a thread of the process, so that its variables are the block's
// shared memory. What a launch adds to it is found through this.
#define ZEL_DYNAMIC_SHARED(type, name) \
  auto* const name = static_cast<type*>(zel::device::dynamicShared())

using cudaTextureObject_t = unsigned long long;

namespace zel::device {

struct Coordinates {
  dim3 threadIdx, blockIdx, blockDim, gridDim;
};

// Those of the device thread that runs on this thread of the process.
extern constinit thread_local const Coordinates* current;

// Hidden from the race detector, which has not been told when these values were set.
template <auto index, auto axis>
struct Coordinate {
  __attribute__((no_sanitize("thread"))) operator unsigned() const { return current->*index.*axis; }
};

template <auto index>
struct Index {
  Coordinate<index, &dim3::x> x;
  Coordinate<index, &dim3::y> y;
  Coordinate<index, &dim3::z> z;
};

void waitForBlock(const std::source_location& where);
void fence();
unsigned increment(unsigned* counter, unsigned limit);
// Where the texel lies, zeros for one that must not be fetched.
const void* texel(cudaTextureObject_t texture, int index, std::size_t bytes);
void* dynamicShared();

}  // namespace zel::device

inline constexpr zel::device::Index<&zel::device::Coordinates::threadIdx> threadIdx{};
inline constexpr zel::device::Index<&zel::device::Coordinates::blockIdx> blockIdx{};
inline constexpr zel::device::Index<&zel::device::Coordinates::blockDim> blockDim{};
inline constexpr zel::device::Index<&zel::device::Coordinates::gridDim> gridDim{};

inline void __syncthreads(const std::source_location& where = std::source_location::current()) {
  zel::device::waitForBlock(where);
}

inline void __threadfence() { zel::device::fence(); }
inline void __threadfence_system() { zel::device::fence(); }

// The counter's old value; it becomes one more, or 0 once it is at the limit.
inline unsigned atomicInc(unsigned* counter, unsigned limit) {
  return zel::device::increment(counter, limit);
}

template <typename T>
T __ldg(const T* place) {
  return *place;
}

template <typename T>
T tex1Dfetch(cudaTextureObject_t texture, int index) {
  T value;
  std::memcpy(&value, zel::device::texel(texture, index, sizeof value), sizeof value);
  return value;
}

inline double __hiloint2double(int high, int low) {
  return std::bit_cast<double>((std::uint64_t{static_cast<std::uint32_t>(high)} << 32) |
                               static_cast<std::uint32_t>(low));
}
