#include "platform/host/parallel.h"
#include "zeldplus/inc/zelveckernels.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t grain = 16384;
// Costs of one element on one thread.
constexpr double streamNanoseconds = 0.5;
constexpr double functionNanoseconds = 8;

template <typename Operation>
void forEachElement(std::uint64_t n, double nanoseconds, const Operation& operation) {
  forEachChunk(n, grain, nanoseconds, [&operation](std::uint64_t begin, std::uint64_t end) {
    for (std::uint64_t i = begin; i < end; ++i) operation(i);
  });
}

}  // namespace

template <typename T, DEVICE_VEC_SCALAR_OP op>
void vecScalarKernel(T* x, T s, unsigned long long n) {
  constexpr double nanoseconds = op < DEVICE_VEC_EXP ? streamNanoseconds : functionNanoseconds;
  forEachElement(n, nanoseconds, [=](std::uint64_t i) { x[i] = scalarOperation<op>(x[i], s); });
}

template <typename T, DEVICE_VEC_BINARY_OP op>
void vecBinaryKernel(T* x, const T* y, unsigned long long n) {
  forEachElement(n, streamNanoseconds,
                 [=](std::uint64_t i) { x[i] = binaryOperation<op>(x[i], y[i]); });
}

template <typename T, typename U>
void vecNumerizeKernel(T* out, const U* in, unsigned n) {
  forEachElement(n, streamNanoseconds, [=](std::uint64_t i) { out[i] = static_cast<T>(in[i]); });
}

template <typename T>
void vecAxpbyKernel(T* y, T a, T* x, T b, unsigned long long n) {
  forEachElement(n, streamNanoseconds,
                 [=](std::uint64_t i) { y[i] = scaledSum(a, x[i], b, y[i]); });
}

}  // namespace zel::inline ZEL_PLATFORM

// After the definitions that it instantiates.
#include "zeldplus/util/vector_instances.h"
