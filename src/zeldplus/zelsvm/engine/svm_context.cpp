#include "zeldplus/zelsvm/engine/svm_context.h"

#include <algorithm>
#include <array>
#include <limits>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::array algorithmNames = {"smo-C-classification", "smo-nu-classification",
                                       "smo-one-class", "smo-epsilon-regression",
                                       "smo-nu-regression"};
constexpr std::array kernelNames = {"linear", "polynomial", "radial", "sigmoid"};

template <std::size_t count>
unsigned positionIn(const std::array<const char*, count>& names, const std::string& name) {
  return static_cast<unsigned>(std::find(names.begin(), names.end(), name) - names.begin());
}

template <std::size_t count>
unsigned numberOrUnsupported(const std::array<const char*, count>& /*names*/, int number) {
  return number >= 0 && static_cast<unsigned>(number) < count ? static_cast<unsigned>(number)
                                                              : static_cast<unsigned>(count);
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
  return static_cast<SVM_TYPE>(positionIn(algorithmNames, name));
}

SVM_KERNEL kernelTypeByName(const std::string& name) {
  return static_cast<SVM_KERNEL>(positionIn(kernelNames, name));
}

const char* nameOf(SVM_TYPE type) {
  return type < algorithmNames.size() ? algorithmNames[type] : "";
}

const char* nameOf(SVM_KERNEL type) { return type < kernelNames.size() ? kernelNames[type] : ""; }

template <typename T>
SvmContext<T>::SvmContext(const SvmParameters& parameters, ParameterChecks checks)
    : svmType(static_cast<SVM_TYPE>(numberOrUnsupported(algorithmNames, parameters.svmType))),
      kernelType(static_cast<SVM_KERNEL>(numberOrUnsupported(kernelNames, parameters.kernelType))),
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
      weights(parameters.weights),
      maxIterations(parameters.maxIterations == 0 ? std::numeric_limits<std::uint64_t>::max()
                                                  : parameters.maxIterations),
      cacheSize(parameters.cacheSize),
      sparse(parameters.sparse),
      shrinking(parameters.shrinking) {
  zel::checkDoublePrecision();
  check(checks);
  blasContext.create();
  sparseContext.create();
}

// Each test is a comparison that NaN fails, so NaN passes.
template <typename T>
void SvmContext<T>::check(ParameterChecks checks) const {
  if (svmType == SVM_TYPE_UNSUPPORTED) throw zel::AppException("Unsupported SVM type");
  if (kernelType == SVM_KERNEL_UNSUPPORTED) throw zel::AppException("Unsupported kernel type");
  if (gamma < 0 || degree < 0) throw zel::AppException("Invalid gamma or degree parameters");
  if (checks == ParameterChecks::model) return;
  if (p < 0) throw zel::AppException("Invalid epsilon parameter");
  if (C <= 0 || eps <= 0) throw zel::AppException("Invalid C or eps parameters");
  if (nu <= 0 || nu > 1) throw zel::AppException("Invalid nu parameter");
}

template <typename T>
zellas::LasContext& SvmContext<T>::las(bool forSparse) {
  if (forSparse) return sparseContext;
  return blasContext;
}

template <typename T>
T SvmContext<T>::effectiveGamma(std::uint64_t dimension) const {
  const T g = gamma == 0 ? 1 / static_cast<T>(dimension) : gamma;
  return kernelType == SVM_KERNEL_RADIAL ? -g : g;
}

template class SvmContext<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
