// The C library's elementary functions as the rules call them: loops over them become calls of the
// library's vector forms where it has any. Declared here, so that sources which are compiled for
// several instruction sets need no header of the standard library.
#pragma once

#ifndef __CUDACC__
#include <features.h>

#if defined(__x86_64__) && defined(__GLIBC__)
#define ZEL_VECTOR_MATH __attribute__((simd("notinbranch")))
#else
#define ZEL_VECTOR_MATH
#endif
extern "C" ZEL_VECTOR_MATH double exp(double) noexcept;
extern "C" ZEL_VECTOR_MATH double log(double) noexcept;
extern "C" ZEL_VECTOR_MATH double tanh(double) noexcept;
#undef ZEL_VECTOR_MATH
#endif
