// A kernel function as methods and machines name it.
#pragma once

#include "rules/kernel_type.h"

namespace zelsvm {

// A kernel function with its parameters; gamma is above 0 and as the formulas have it.
struct KernelSettings {
  SVM_KERNEL type;
  double gamma;
  double coef0;
  double degree;
};

}  // namespace zelsvm
