// The parameter record of one training or prediction run.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "zeldplus/inc/zellas.h"
#include "zeldplus/zelsvm/engine/svm_kernel_type.h"

namespace zelsvm::inline ZEL_PLATFORM {

enum SVM_TYPE : unsigned {
  SVM_TYPE_C_CLASSIFICATION = 0,
  SVM_TYPE_NU_CLASSIFICATION = 1,
  SVM_TYPE_ONE_CLASS = 2,
  SVM_TYPE_EPSILON_REGRESSION = 3,
  SVM_TYPE_NU_REGRESSION = 4,
  SVM_TYPE_UNSUPPORTED = 5,
};

enum class ProblemKind : std::uint32_t {
  none = 0,
  classification = 1,
  regression = 2,
  oneClass = 3,
};

// Names as model files spell them; an unknown name gives the unsupported value, which has no name.
SVM_TYPE svmTypeByName(const std::string& name);
SVM_KERNEL kernelTypeByName(const std::string& name);
const char* nameOf(SVM_TYPE type);
const char* nameOf(SVM_KERNEL type);

// What a run is asked for, unchecked.
struct SvmParameters {
  int svmType = SVM_TYPE_C_CLASSIFICATION;
  int kernelType = SVM_KERNEL_RADIAL;
  double degree = 3;
  double gamma = 0;  // 0 means one over the number of features
  double coef0 = 0;
  double C = 1;
  double p = 0.1;  // epsilon of epsilon regression
  double nu = 0.5;
  double eps = 0.001;                     // stopping tolerance
  std::map<double, double> weights = {};  // factors of C by label
  std::uint64_t maxIterations = 0;        // 0 means no limit
  std::uint64_t cacheSize = 100;          // MB
  bool sparse = true;
  bool shrinking = true;
};

// Which parameters are checked: those read back from a model lack the training ones.
enum class ParameterChecks { training, model };

template <typename T>
class SvmContext {
 public:
  // Checks the device's double precision and the parameters, then makes the linear algebra
  // contexts. Throws AppException for bad parameters and RuntimeException when a library fails.
  SvmContext(const SvmParameters& parameters, ParameterChecks checks);
  virtual ~SvmContext() = default;
  SvmContext(const SvmContext&) = delete;
  SvmContext& operator=(const SvmContext&) = delete;

  // The context that data are read under: sparse or dense.
  [[nodiscard]] zellas::LasContext& las() { return las(sparse); }
  [[nodiscard]] zellas::LasContext& las(bool forSparse);

  // gamma, or one over the number of features where it is 0; negated for the radial kernel.
  [[nodiscard]] T effectiveGamma(std::uint64_t dimension) const;

  const SVM_TYPE svmType;
  const SVM_KERNEL kernelType;
  const std::string algorithmName;
  const std::string kernelName;
  const ProblemKind problemKind;
  const T C;
  const T eps;
  const T p;
  const T nu;
  const T coef0;
  const T degree;
  const T gamma;
  const std::map<double, double> weights;
  const std::uint64_t maxIterations;
  const std::uint64_t cacheSize;
  const bool sparse;
  const bool shrinking;

 private:
  void check(ParameterChecks checks) const;

  zellas::BlasContext blasContext;
  zellas::SparseContext<T> sparseContext;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
