// The C library's elementary functions as the rules call them with scalars. Declared here, so that
// sources which are compiled for several instruction sets need no header of the standard library.
#pragma once

#ifndef __CUDACC__
extern "C" double exp(double) noexcept;
extern "C" double log(double) noexcept;
extern "C" double tanh(double) noexcept;
#endif
