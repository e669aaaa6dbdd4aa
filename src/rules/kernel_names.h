// Kernel functions by name, as model files spell it.
#pragma once

#include <string_view>

#include "rules/kernel_functions.h"

namespace zelsvm {

// "" for one that files cannot name.
constexpr const char* nameOf(SVM_KERNEL type) {
  if (type >= SVM_KERNEL_UNSUPPORTED) return "";
  return withKernel(type, []<typename Function>() { return Function::name; });
}

// An unknown name gives the unsupported one.
constexpr SVM_KERNEL kernelTypeByName(std::string_view name) {
  unsigned type = 0;
  while (type < SVM_KERNEL_UNSUPPORTED && name != nameOf(static_cast<SVM_KERNEL>(type))) ++type;
  return static_cast<SVM_KERNEL>(type);
}

}  // namespace zelsvm
