// Sums over kernel rows in single precision. Most samples are so far from the gap that a few digits
// tell on which side they are; the sums of those that decide are made exact at the end.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/set_machine.h"
#include "solver/violators.h"

namespace zelsvm {

class RoughSums {
 public:
  // For so many samples.
  void begin(std::uint64_t samples, double tolerance);

  // Whether exact sums of so many free variables would be worth it at the end.
  [[nodiscard]] static bool pays(std::uint64_t samples, std::uint64_t freeVariables);

  // machine.addRows(). False, with the sums as they were, where exact rows would have changed some
  // otherwise by more than the solve should bear.
  bool add(std::span<const WeightedRow> added, std::span<double> sums, SetMachine& machine);
  // Makes exact the sums of all samples that may be a group's extremes, given violators of these
  // sums; the worst error found tells how far from the extremes these are. False where that takes
  // more than exact rows would.
  bool makeExact(const SetVariables& variables, const Violators& violators, std::span<double> sums,
                 SetMachine& machine);
  [[nodiscard]] bool isUsed() const { return used; }
  // Kernel values that exact sums took.
  [[nodiscard]] double exactValues() const { return values; }

 private:
  double replaceNear(std::span<double> sums, SetMachine& machine);

  double bearable = 0;
  double margin = 0;  // more than any error
  unsigned rounds = 0;
  bool used = false;
  double values = 0;
  std::vector<unsigned> probes;
  std::vector<unsigned> near;
  std::vector<double> exact;
  std::vector<double> before;
  std::vector<WeightedRow> rows;  // of all multipliers
};

}  // namespace zelsvm
