// Who violates optimality how much, and the choice of a working set among them.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "platform/set_variables.h"

namespace zelsvm {

// Violations of one group: the largest of those that may rise and the smallest of those that may
// fall; and of the free variables.
struct GroupState {
  double up;
  double low;
  double freeSum = 0;
  std::uint64_t freeCount = 0;

  [[nodiscard]] double gap() const { return up - low; }
};

// A number that orders samples anew with every step, the same on every machine.
std::uint32_t shuffled(std::uint32_t sample, std::uint32_t step);

// The groups of a problem at its present sums K (y α).
class Violators {
 public:
  void look(const SetVariables& variables, std::span<const double> sums);
  [[nodiscard]] const GroupState& group(unsigned g) const { return states[g]; }
  // The larger gap of the two groups.
  [[nodiscard]] double gap() const;
  [[nodiscard]] std::uint64_t freeCount() const {
    return states[0].freeCount + states[1].freeCount;
  }

  // Samples with a variable whose violation is less than the margin from its group's extreme, or
  // beyond it, in ascending order; the extremes as they were looked at last.
  void listNear(const SetVariables& variables, std::span<const double> sums, double margin,
                std::vector<unsigned>& samples) const;

  // At most so many samples in ascending order: those with variables that rise from above the
  // middle and that fall from below in turns, by chance. The most violating ones would resemble
  // each other. All samples where so many are asked for. step: how many sets were chosen before.
  void choose(const SetVariables& variables, std::span<const double> sums, double tolerance,
              std::uint64_t most, std::uint32_t step, std::vector<unsigned>& set);

 private:
  using Ticket = std::pair<std::uint32_t, unsigned>;  // order and sample

  void list(const SetVariables& variables, std::span<const double> sums, unsigned g,
            std::uint32_t step);
  static void keepFirst(std::vector<Ticket>& list, std::uint64_t most);

  GroupState states[2]{};
  std::vector<Ticket> tickets[4];  // two a group: that rise, that fall
  std::vector<char> chosen;
};

}  // namespace zelsvm
