// The parameter record of one training or prediction run.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <string>

#include "platform/machine.h"
#include "rules/kernel_names.h"

namespace zelsvm {

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
const char* nameOf(SVM_TYPE type);

// What a run is asked for, unchecked.
struct SvmParameters {
  int svmType = SVM_TYPE_C_CLASSIFICATION;
  int kernelType = SVM_KERNEL_RADIAL;
  double degree = 3;
  double gamma = 0;        // 0 means one over the number of features
  bool zeroGamma = false;  // it means 0 instead
  double coef0 = 0;
  double C = 1;
  double p = 0.1;  // epsilon of epsilon regression
  double nu = 0.5;
  double eps = 0.001;                     // stopping tolerance
  std::map<double, double> weights = {};  // by label: factors of its samples' bounds
  std::uint64_t maxIterations = 0;        // 0 means no limit
  std::uint64_t cacheSize = 100;          // MB
  bool sparse = true;
  bool shrinking = true;
  bool precomputed = false;  // kernel values are given, whatever the kernel type says
  bool anyLabels = false;    // of classes; else they are whole numbers
};

// Which parameters are checked: those read back from a model lack the training ones.
enum class ParameterChecks { training, model };

// The parameters in the form that the engine reads.
template <typename T>
struct SvmSettings {
  explicit SvmSettings(const SvmParameters& parameters);

  // The kernel function for samples of so many features: a gamma of 0 may be one over their number.
  [[nodiscard]] KernelSettings kernelSettings(std::uint64_t features) const;

  // As it was asked for: 0 for none.
  [[nodiscard]] std::uint64_t limitOfIterations() const {
    return maxIterations == std::numeric_limits<std::uint64_t>::max() ? 0 : maxIterations;
  }

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
  const bool zeroGamma;
  const std::map<double, double> weights;
  const std::uint64_t maxIterations;
  const std::uint64_t cacheSize;
  const bool sparse;
  const bool shrinking;
  const bool anyLabels;
};

template <typename T>
class SvmContext : public SvmSettings<T> {
 public:
  // Checks the parameters: throws AppException for bad ones. The machine must outlive the context.
  SvmContext(const SvmParameters& parameters, ParameterChecks checks, const Machine& machine);
  // One of so many contexts with the same settings whose solvers work at the same time: each has
  // its share of the cache.
  SvmContext(const SvmContext& whole, unsigned cacheSharers);
  virtual ~SvmContext() = default;
  SvmContext(const SvmContext&) = delete;
  SvmContext& operator=(const SvmContext&) = delete;

  const Machine& machine;  // what the run works on
  const unsigned cacheSharers;

 private:
  void check(ParameterChecks checks) const;
};

}  // namespace zelsvm
