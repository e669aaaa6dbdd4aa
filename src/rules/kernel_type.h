// The four kernel functions.
#pragma once

namespace zelsvm {

// linear: u'v. polynomial: (gamma u'v + coef0)^degree. radial: exp(-gamma |u - v|^2).
// sigmoid: tanh(gamma u'v + coef0).
enum SVM_KERNEL : unsigned {
  SVM_KERNEL_LINEAR = 0,
  SVM_KERNEL_POLYNOMIAL = 1,
  SVM_KERNEL_RADIAL = 2,
  SVM_KERNEL_SIGMOID = 3,
  SVM_KERNEL_UNSUPPORTED = 4,
  // No function: the values are given. Not among those that options and files can name.
  SVM_KERNEL_PRECOMPUTED = 5,
};

}  // namespace zelsvm
