// Which lines about the kernel function a model has.
#pragma once

#include <string_view>

#include "files/file_base.h"
#include "rules/kernel_names.h"

namespace zelsvm {

// For the keywords of degree, gamma and coef0: whether this kernel function has the parameter. An
// unknown one has none.
inline bool hasParameter(std::string_view kernelName, std::string_view keyword) {
  const SVM_KERNEL type = kernelTypeByName(kernelName);
  if (type >= SVM_KERNEL_UNSUPPORTED) return false;
  return withKernel(type, [keyword]<typename Function>() {
    if (keyword == keywords::degree) return Function::takesDegree;
    if (keyword == keywords::coef0) return Function::takesCoef0;
    return Function::takesGamma;
  });
}

}  // namespace zelsvm
