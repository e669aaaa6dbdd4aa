#include "solver/solver_choice.h"

#include <algorithm>

#include "rules/kernel_functions.h"

namespace zelsvm {

// One thread, AVX-512, 100 features, milliseconds of whole processes, pairs against sets. 1,500
// samples: classification 10 and 10 (cost 1), 20 and 20 (cost 10), nu-classification 30 and 20,
// one-class 20 and 5, regressions 20 and 10, 40 and 10. 3,000 samples: 100 and 40, 130 and 80, 160
// and 60, 120 and 10, 160 and 50, 230 and 50. At 1,000 they are equal; below, letters with few
// support vectors are solved in less than a set's matrix takes.
bool worksBySets(SVM_TYPE type, std::uint64_t samples) {
  const bool isRegression = type == SVM_TYPE_EPSILON_REGRESSION || type == SVM_TYPE_NU_REGRESSION;
  return samples >= (isRegression ? 1000 : 1500);
}

// Sets of 1,024 to 4,096 samples did best from 5,000 to 50,000 samples. Where more variables are
// free, 4,096 did best at 20,000 samples and cost 100 (4.5 s, 5.1 with 2,048); with 100,000 sparse
// samples and 8,000 free variables 8,192 took 19 sets and 7.2 s, 4,096 took 53 and 12.2. With 8,192
// from the start these took 64,300 rows in place of 77,700. Where few samples are at their bounds
// (gamma 1, cost 100) the whole problem is the best set.
std::uint64_t setSize(std::uint64_t samples, std::uint64_t freeVariables) {
  const std::uint64_t most = samples < 50'000 ? 4096 : 8192;
  if (samples <= most && freeVariables > samples / 2) return samples;
  const std::uint64_t usual = std::clamp<std::uint64_t>(samples / 10, 1024, most);
  return std::min(samples, std::clamp(freeVariables, usual, most));
}

// Values of at most 1 have errors of 1e-7 or so in single precision, sums over them 1e-4 (cost 1).
SetPrecision rowPrecision(SVM_KERNEL kernel) {
  const bool isSmall = withKernel(kernel, []<typename F>() { return F::unitDiagonal; });
  return isSmall ? SetPrecision::single : SetPrecision::full;
}

bool startsFromSubset(SVM_TYPE type) {
  return type == SVM_TYPE_ONE_CLASS || type == SVM_TYPE_NU_CLASSIFICATION;
}

// Most solves end before: their sums would have to be made anew for the sake of a few steps. At
// 20,000 samples and cost 100 these steps save half of the iterations and a tenth of the time.
bool tiesSets(std::uint32_t sets) { return sets >= 30; }

}  // namespace zelsvm
