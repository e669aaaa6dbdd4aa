// Guesses the working pairs of the next iterations by going through these iterations with a few
// variables only: those that violate optimality most. The guess is right as long as the solver's
// choices are among them.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/host/rows/kernel_rows.h"
#include "platform/host/sweeps/smo_sweeps.h"

namespace zelsvm {

// `halves` times `samples` variables.
struct LookaheadView {
  SweptVariables variables;
  const double* alpha;
  const double* diagonal;  // K(x, x) by sample; null where it is 1
  double Cp;
  double Cn;
  std::uint64_t samples;
  unsigned halves;
  bool nu;
};

// A step that v does not show yet, in changes of the multipliers times their signs.
struct PendingStep {
  std::uint64_t i;
  std::uint64_t j;
  double stepI;
  double stepJ;
};

class Lookahead {
 public:
  // Starts from the view's state after the pending step, if there is one.
  void forecast(std::vector<std::uint64_t>& samples, unsigned most,
                const std::vector<std::uint32_t>& isKnown, KernelRows& kernel,
                const LookaheadView& view, const PendingStep* pending);

 private:
  struct Candidate {
    double strength;
    std::uint64_t variable;
  };
  struct Variable {
    std::uint64_t variable;
    bool positive;
    double v;
    double a;
    double c;
    double diagonal;
  };

  void collect(const LookaheadView& view, SmoState mask, SmoState wanted);
  void take(const LookaheadView& view, std::uint64_t variable);
  // Kernel values of a variable with all of the set, computed when first asked for.
  const double* row(std::size_t t);
  void move(std::size_t i, std::size_t j, double stepI, double stepJ);
  bool step(std::vector<std::size_t>& pair, bool nu);
  [[nodiscard]] std::size_t strongest(bool nu, bool positive) const;
  std::size_t partner(const std::size_t* first, bool nu);

  std::vector<Candidate> list;
  std::vector<Variable> set;
  std::vector<std::uint64_t> setSamples;
  KernelRows* kernel = nullptr;
  std::vector<double> values;
  std::vector<bool> known;  // rows of values
};

}  // namespace zelsvm
