// What is known of a kernel by its type alone, of given values, too.
#pragma once

#include "rules/kernel_functions.h"

namespace zelsvm {

// Those without a unit diagonal must not read the norms: their diagonal is made without. Of given
// values nothing is known.
constexpr bool hasUnitDiagonal(SVM_KERNEL type) {
  return type < SVM_KERNEL_UNSUPPORTED && withKernel(type, []<typename Function>() {
           static_assert(Function::unitDiagonal || !Function::readsNorms);
           return Function::unitDiagonal;
         });
}

// What a value costs one thread, the product apart.
constexpr double nanosecondsOf(SVM_KERNEL type) {
  constexpr double given = 1.0;
  if (type >= SVM_KERNEL_UNSUPPORTED) return given;
  return withKernel(type, []<typename Function>() { return Function::nanoseconds; });
}

}  // namespace zelsvm
