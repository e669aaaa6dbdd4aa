// The two-variable method within a working set.
#pragma once

#include <cstdint>
#include <span>

#include "base/vectors.h"
#include "platform/host/sets/set_matrix.h"
#include "platform/host/sets/set_sweeps.h"
#include "platform/set_machine.h"

namespace zelsvm {

class SetSolver {
 public:
  // SetMachine::solveSet with this matrix.
  SetSteps solve(const SetMatrix& matrix, const SetVariables& variables, std::span<double> sums,
                 double tolerance, std::uint64_t mostSteps);

 private:
  void load(const SetMatrix& matrix, const SetVariables& variables, std::span<const double> sums);
  void refresh(const SetVariables& variables, std::uint64_t sample);
  template <typename K, typename RowOf>
  SetSteps run(const SetSweeps<K>& sweeps, const SetVariables& variables, double tolerance,
               std::uint64_t mostSteps, RowOf rowOf);
  SetStep move(const SetVariables& variables, unsigned group, unsigned i, unsigned j,
               double k) const;

  HostVector<double> memory;  // of the arrays
  SetArrays arrays{};
  double* diagonal = nullptr;
  double* rises[2] = {};
  double* falls[2] = {};
};

}  // namespace zelsvm
