// A step in the space that the last working sets' steps span. Where costs are high many variables
// stay free, and sets undo a part of what the sets before have done.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "platform/set_machine.h"

namespace zelsvm {

class SubspaceStep {
 public:
  // A variable and what is added to its multiplier.
  using Change = std::pair<std::uint64_t, double>;

  void clear() { directions.clear(); }
  // Remembers a set's step, which has changed the sums from what they were before.
  void remember(const SetVariables& variables, std::vector<Change> changes,
                std::span<const double> sumsBefore, std::span<const double> sums);
  // Moves multipliers and sums to the minimum of the objective in the space, as far as the bounds
  // let it; variables that would leave them stay there, at the cost of a kernel row each. False
  // where nothing moves.
  bool move(const SetVariables& variables, std::span<double> sums, SetMachine& machine);

 private:
  // More directions would drift: their sums are differences.
  static constexpr std::size_t most = 5;
  static constexpr std::size_t mostClipped = 200;

  struct Direction {
    std::vector<Change> changes;
    std::vector<double> sums;  // what the changes add to the sums
  };

  [[nodiscard]] bool combine(const SetVariables& variables, std::span<const double> sums);
  [[nodiscard]] bool solveFactors(std::vector<double>& factors) const;
  [[nodiscard]] bool clip(const SetVariables& variables, SetMachine& machine);
  [[nodiscard]] double length(const SetVariables& variables, std::span<const double> sums) const;

  std::vector<Direction> directions;
  std::vector<double> products;  // of directions, a row each
  // The combined step.
  std::vector<double> step;      // by variable
  std::vector<double> stepSums;  // by sample
  std::vector<std::uint64_t> touched;
  std::vector<WeightedRow> rows;
};

}  // namespace zelsvm
