// What the working-set method asks of a machine: sums over kernel rows of all samples, and the
// two-variable method within a set.
#pragma once

#include <cstdint>
#include <span>

#include "data/matrix.h"
#include "platform/kernel_settings.h"
#include "platform/set_variables.h"

namespace zelsvm {

enum class SetPrecision { single, full };

// What it points to outlives the solve.
struct SetTask {
  const zelmag::AbstractMatrix<double>* samples;
  KernelSettings kernel;
  std::uint64_t cacheMegabytes;                 // for kernel rows
  unsigned cacheSharers = 1;                    // solves that share that memory
  SetPrecision precision = SetPrecision::full;  // of kernel rows
};

// A sample's kernel row with a factor; keep: the row will probably be asked for again.
struct WeightedRow {
  unsigned sample;
  bool keep;
  double weight;
};

struct SetSteps {
  std::uint64_t count;
  bool isDone;  // within the tolerance, or no step changes anything
};

// One solve at a time. Same bits in every run, and on the processor for any number of threads and
// any cache. What any function here throws is a std::bad_alloc for memory that is not there or a
// RuntimeException for another failure of the machine.
class SetMachine {
 public:
  SetMachine() = default;
  SetMachine(const SetMachine&) = delete;
  SetMachine& operator=(const SetMachine&) = delete;
  virtual ~SetMachine() = default;

  virtual void begin(const SetTask& task) = 0;
  // Releases what the solve needed; memory that the next one can use stays.
  virtual void end() = 0;

  // sums[s] += weight K(row, s) for each row and all samples s, in the task's precision.
  virtual void addRows(std::span<const WeightedRow> rows, std::span<double> sums) = 0;
  // sums[i] += weight K(row, samples[i]) for each row, exact doubles throughout.
  virtual void addExactly(std::span<const WeightedRow> rows, std::span<const unsigned> samples,
                          std::span<double> sums) = 0;
  // Whether single precision makes addRows() faster.
  [[nodiscard]] virtual bool addsRoughly() const = 0;
  // So many rows are best added by one call.
  [[nodiscard]] virtual std::uint64_t rowsAtOnce() const = 0;
  // Kernel rows computed since begin().
  [[nodiscard]] virtual std::uint64_t rowsMade() const = 0;
  // The part of the rows asked for since then that the cache held; 0 before the first.
  [[nodiscard]] virtual double cacheHitRate() const = 0;

  // Makes the kernel matrix of these samples, which the following calls work with.
  virtual void chooseSet(std::span<const unsigned> samples, SetPrecision precision) = 0;
  // sums[r] += sum over c of weights[c] K_rc within the set.
  virtual void addSetRows(std::span<const double> weights, std::span<double> sums) = 0;
  // At most so many steps of the two-variable method on the variables of the set's samples, until
  // the largest violation of a group is within the tolerance; the sums follow.
  virtual SetSteps solveSet(const SetVariables& variables, std::span<double> sums, double tolerance,
                            std::uint64_t mostSteps) = 0;
};

}  // namespace zelsvm
