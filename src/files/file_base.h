// What readers and writers of data and model files share: the keywords and the index base.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/errors.h"

namespace zelsvm {

// First tokens of the lines of a model file's header.
namespace keywords {
inline constexpr std::string_view svmType = "SvmType:";
inline constexpr std::string_view kernelType = "KernelType:";
inline constexpr std::string_view degree = "Degree:";
inline constexpr std::string_view gamma = "Gamma:";
inline constexpr std::string_view coef0 = "Coef0:";
inline constexpr std::string_view classCount = "NrClass:";
inline constexpr std::string_view totalVectors = "TotalSV:";
inline constexpr std::string_view rho = "Rho:";
inline constexpr std::string_view labels = "Labels:";
inline constexpr std::string_view classSizes = "NrSV:";
inline constexpr std::string_view sigma = "Sigma:";
inline constexpr std::string_view probabilityA = "Probability_A:";
inline constexpr std::string_view probabilityB = "Probability_B:";
inline constexpr std::string_view baseIndex = "BaseIdx:";
inline constexpr std::string_view xScale = "X-scale:";
inline constexpr std::string_view yScale = "Y-scale:";
inline constexpr std::string_view continuation = "  ";
inline constexpr std::string_view vectors = "SV:";
}  // namespace keywords

template <typename T>
class AbstractFileBase {
 public:
  // Throws RuntimeException unless the index of the first feature is 0 or 1.
  explicit AbstractFileBase(std::uint64_t indexBase) : baseIndex(indexBase) {
    if (indexBase >= 2)
      throw zel::RuntimeException("The base index of a data matrix must be 0 or 1 only");
  }
  AbstractFileBase(const AbstractFileBase&) = delete;
  AbstractFileBase& operator=(const AbstractFileBase&) = delete;
  virtual ~AbstractFileBase() = default;

  [[nodiscard]] std::uint64_t indexBase() const { return baseIndex; }

 protected:
  std::uint64_t baseIndex;
};

}  // namespace zelsvm
