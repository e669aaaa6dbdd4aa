#include "parameters/svm_context.h"

#include <algorithm>
#include <array>
#include <limits>

#include "base/errors.h"

namespace zelsvm {
namespace {

constexpr std::array algorithmNames = {"smo-C-classification", "smo-nu-classification",
                                       "smo-one-class", "smo-epsilon-regression",
                                       "smo-nu-regression"};

unsigned numberOrUnsupported(int number, unsigned unsupported) {
  return number >= 0 && static_cast<unsigned>(number) < unsupported ? static_cast<unsigned>(number)
                                                                    : unsupported;
}

ProblemKind kindOf(SVM_TYPE type) {
  switch (type) {
    case SVM_TYPE_C_CLASSIFICATION:
    case SVM_TYPE_NU_CLASSIFICATION:
      return ProblemKind::classification;
    case SVM_TYPE_ONE_CLASS:
      return ProblemKind::oneClass;
    case SVM_TYPE_EPSILON_REGRESSION:
    case SVM_TYPE_NU_REGRESSION:
      return ProblemKind::regression;
    case SVM_TYPE_UNSUPPORTED:
      break;
  }
  return ProblemKind::none;
}

}  // namespace

SVM_TYPE svmTypeByName(const std::string& name) {
  const auto* const found = std::find(algorithmNames.begin(), algorithmNames.end(), name);
  return static_cast<SVM_TYPE>(found - algorithmNames.begin());
}

const char* nameOf(SVM_TYPE type) {
  return type < algorithmNames.size() ? algorithmNames[type] : "";
}

template <typename T>
SvmSettings<T>::SvmSettings(const SvmParameters& parameters)
    : svmType(static_cast<SVM_TYPE>(numberOrUnsupported(parameters.svmType, SVM_TYPE_UNSUPPORTED))),
      kernelType(parameters.precomputed ? SVM_KERNEL_PRECOMPUTED
                                        : static_cast<SVM_KERNEL>(numberOrUnsupported(
                                              parameters.kernelType, SVM_KERNEL_UNSUPPORTED))),
      algorithmName(nameOf(svmType)),
      kernelName(nameOf(kernelType)),
      problemKind(kindOf(svmType)),
      C(parameters.C),
      eps(parameters.eps),
      p(parameters.p),
      nu(parameters.nu),
      coef0(parameters.coef0),
      degree(parameters.degree),
      gamma(parameters.gamma),
      zeroGamma(parameters.zeroGamma),
      weights(parameters.weights),
      maxIterations(parameters.maxIterations == 0 ? std::numeric_limits<std::uint64_t>::max()
                                                  : parameters.maxIterations),
      cacheSize(parameters.cacheSize),
      sparse(parameters.sparse),
      shrinking(parameters.shrinking),
      anyLabels(parameters.anyLabels) {}

template <typename T>
SvmContext<T>::SvmContext(const SvmParameters& parameters, ParameterChecks checks,
                          const Machine& machine)
    : SvmSettings<T>(parameters), machine(machine), cacheSharers(1) {
  check(checks);
}

template <typename T>
SvmContext<T>::SvmContext(const SvmContext& whole, unsigned cacheSharers)
    : SvmSettings<T>(whole), machine(whole.machine), cacheSharers(cacheSharers) {}

// Each test is a comparison that NaN fails, so NaN passes.
template <typename T>
void SvmContext<T>::check(ParameterChecks checks) const {
  if (this->svmType == SVM_TYPE_UNSUPPORTED) throw zel::AppException("Unsupported SVM type");
  if (this->kernelType == SVM_KERNEL_UNSUPPORTED)
    throw zel::AppException("Unsupported kernel type");
  if (this->gamma < 0 || this->degree < 0)
    throw zel::AppException("Invalid gamma or degree parameters");
  if (checks == ParameterChecks::model) return;
  if (this->p < 0) throw zel::AppException("Invalid epsilon parameter");
  if (this->C <= 0 || this->eps <= 0) throw zel::AppException("Invalid C or eps parameters");
  if (this->nu <= 0 || this->nu > 1) throw zel::AppException("Invalid nu parameter");
}

template <typename T>
KernelSettings SvmSettings<T>::kernelSettings(std::uint64_t features) const {
  const bool isComputed = gamma == 0 && !zeroGamma;
  return {kernelType, isComputed ? 1 / static_cast<T>(features) : gamma, coef0, degree};
}

template struct SvmSettings<double>;
template class SvmContext<double>;

}  // namespace zelsvm
