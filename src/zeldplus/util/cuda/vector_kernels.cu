#include "zeldplus/inc/zelveckernels.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

// Grid-stride loop: position and stride start in 32 bits, steps are counted in n's type. The
// barrier keeps a block's warps together on its stretch of the arrays.
template <typename Count, typename Operation>
__device__ __forceinline__ void forEachElement(Count n, const Operation& operation) {
  const unsigned stride = blockDim.x * gridDim.x;
  Count i = blockIdx.x * blockDim.x + threadIdx.x;
  for (bool more = i < n; more; i += stride) {
    operation(i);
    __syncthreads();
    more = n - i > stride;
  }
}

}  // namespace

template <typename T, DEVICE_VEC_SCALAR_OP op>
__global__ void vecScalarKernel(T* x, T s, unsigned long long n) {
  forEachElement(n, [=](unsigned long long i) { x[i] = scalarOperation<op>(x[i], s); });
}

template <typename T, DEVICE_VEC_BINARY_OP op>
__global__ void vecBinaryKernel(T* x, const T* y, unsigned long long n) {
  forEachElement(n, [=](unsigned long long i) { x[i] = binaryOperation<op>(x[i], __ldg(y + i)); });
}

template <typename T, typename U>
__global__ void vecNumerizeKernel(T* out, const U* in, unsigned n) {
  forEachElement(n, [=](unsigned i) { out[i] = static_cast<T>(__ldg(in + i)); });
}

template <typename T>
__global__ void vecAxpbyKernel(T* y, T a, T* x, T b, unsigned long long n) {
  forEachElement(n, [=](unsigned long long i) { y[i] = scaledSum(a, __ldg(x + i), b, y[i]); });
}

}  // namespace zel::inline ZEL_PLATFORM

// After the definitions that it instantiates.
#include "zeldplus/util/vector_instances.h"
