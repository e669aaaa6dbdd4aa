// A kernel function with its parameters, ready to be applied to products.
#pragma once

#include <cstdint>

#include "platform/host/sweeps/transform_sweeps.h"
#include "platform/machine.h"
#include "rules/kernel_functions.h"

namespace zelsvm {

class HostKernel {
 public:
  HostKernel() = default;
  explicit HostKernel(const KernelSettings& settings)
      : constants{settings.gamma, settings.coef0, effectiveDegree(settings.degree)},
        function(transformSweeps().kernels[settings.type]),
        cost(nanosecondsOf(settings.type)) {}

  // products[i], i < n, of one sample with others become kernel values; norm and norms are their
  // squared norms.
  void transform(double* products, const double* norms, std::uint64_t n, double norm) const {
    function(constants, products, norms, n, norm);
  }

  // What a value costs one thread, the product apart.
  [[nodiscard]] double nanoseconds() const { return cost; }
  static double nanosecondsOf(SVM_KERNEL type) {
    return withKernel(type, []<typename Function>() { return Function::nanoseconds; });
  }

 private:
  KernelConstants constants{};
  KernelTransform function = nullptr;
  double cost = 0;
};

}  // namespace zelsvm
