#include "solver/solver_choice.h"

#include <algorithm>

namespace zelsvm {

bool worksBySets(SVM_TYPE type, std::uint64_t samples) {
  const bool isRegression = type == SVM_TYPE_EPSILON_REGRESSION || type == SVM_TYPE_NU_REGRESSION;
  return samples >= (isRegression ? 1000 : 1500);
}

std::uint64_t setSize(std::uint64_t samples, std::uint64_t freeVariables) {
  const std::uint64_t usual = std::clamp<std::uint64_t>(samples / 10, 1024, 4096);
  return std::min(samples, std::clamp<std::uint64_t>(freeVariables, usual, 4096));
}

bool startsFromSubset(SVM_TYPE type) {
  return type == SVM_TYPE_ONE_CLASS || type == SVM_TYPE_NU_CLASSIFICATION;
}

bool tiesSets(std::uint32_t sets) { return sets >= 30; }

}  // namespace zelsvm
