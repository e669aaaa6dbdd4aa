// Marks the numerical rules: pure functions of scalars (or, on the host, of vectors of lanes),
// usable from device code and never emitted out of line, so that no two instruction sets share a
// copy.
#pragma once

#ifdef __CUDACC__
#define ZEL_RULE __host__ __device__ __forceinline__
#else
#define ZEL_RULE inline __attribute__((always_inline))
#endif
