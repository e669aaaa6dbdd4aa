#include "platform/cuda/sets/cuda_set_machine.h"

#include <vector>

#include "platform/cuda/machine/kernel_symbols.h"
#include "platform/cuda/sets/device_set.h"
#include "platform/cuda/sets/device_set_rows.h"

namespace zelsvm {
namespace {

class CudaSetMachine : public SetMachine, private SymbolUser {
 public:
  CudaSetMachine(DeviceTurns& turns, LinearAlgebra& libraries)
      : SymbolUser(turns), libraries(&libraries) {}

  void begin(const SetTask& newTask) override {
    DeviceTurn turn(*this);
    task = newTask;
    samples.reset();
    samples = makeDeviceSamples(*task.samples, *libraries);
    rows.assign(task, *samples);
    turn.publish();
  }

  void end() override {
    const DeviceTurn turn(*this);
    samples.reset();
    task = {};
  }

  void addRows(std::span<const WeightedRow> weighted, std::span<double> sums) override {
    DeviceTurn turn(*this);
    turn.publishIfLost();
    rows.add(weighted, sums);
  }

  // All samples' sums take as long as those of some.
  void addExactly(std::span<const WeightedRow> weighted, std::span<const unsigned> chosen,
                  std::span<double> sums) override {
    std::vector<double> all(task.samples->rows());
    for (std::size_t i = 0; i < chosen.size(); ++i) all[chosen[i]] = sums[i];
    addRows(weighted, all);
    for (std::size_t i = 0; i < chosen.size(); ++i) sums[i] = all[chosen[i]];
  }

  [[nodiscard]] bool addsRoughly() const override { return false; }
  // One read-back of the sums serves as many rows as may be.
  [[nodiscard]] std::uint64_t rowsAtOnce() const override { return 4096; }
  [[nodiscard]] std::uint64_t rowsMade() const override { return rows.made(); }
  [[nodiscard]] double cacheHitRate() const override { return rows.hitRate(); }

  // In full precision whatever is asked for, as all else.
  void chooseSet(std::span<const unsigned> chosen, SetPrecision /*precision*/) override {
    DeviceTurn turn(*this);
    turn.publishIfLost();
    set.choose(task, *samples, chosen);
  }

  void addSetRows(std::span<const double> weights, std::span<double> sums) override {
    const DeviceTurn turn(*this);
    set.addRows(libraries->blas(), weights, sums);
  }

  SetSteps solveSet(const SetVariables& variables, std::span<double> sums, double tolerance,
                    std::uint64_t mostSteps) override {
    const DeviceTurn turn(*this);
    return set.solve(variables, sums, tolerance, mostSteps);
  }

 private:
  void publish() override { publishKernel(task.kernel); }

  LinearAlgebra* libraries;
  SetTask task{};
  std::unique_ptr<DeviceSamples> samples;
  DeviceSetRows rows;
  DeviceSet set;
};

}  // namespace

std::unique_ptr<SetMachine> makeCudaSetMachine(DeviceTurns& turns, LinearAlgebra& libraries) {
  return std::make_unique<CudaSetMachine>(turns, libraries);
}

}  // namespace zelsvm
