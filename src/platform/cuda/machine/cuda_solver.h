// What a solver asks for, on CUDA: a launch each, and one read-back where the host must decide.
#pragma once

#include <optional>
#include <vector>

#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/machine/device_turns.h"
#include "platform/cuda/machine/selection_results.h"
#include "platform/cuda/machine/smo_kernel.h"
#include "platform/machine.h"

namespace zelsvm {

class CudaSolver : public SolverMachine, private SymbolUser {
 public:
  // Both outlive it.
  CudaSolver(DeviceTurns& turns, LinearAlgebra& libraries, SVM_KERNEL kernelType, bool twoGroups);

  void begin(const SolverTask& newTask, const std::function<void()>& columnsAdded) override;
  void end() override;
  void activate(std::span<const unsigned> ascendingVariables) override;
  void select(SmoSelection<double>& selection, SmoSelection<double>& second) override;
  // Of the selection last made, which the device still has.
  PairStep movePair(const SmoSelection<double>& selection,
                    const SmoSelection<double>& second) override;
  void updateGradient() override;
  void markShrinkable(const SmoSelection<double>& selection, const SmoSelection<double>& second,
                      std::span<signed char> marks) override;
  void read(std::span<double> multipliers, std::span<double> gradientValues) override;
  [[nodiscard]] double cacheHitRate() const override { return kernel.hitRate(); }

 private:
  void publish() override;
  void releaseTextures();
  void addStart(const std::function<void()>& columnsAdded);
  [[nodiscard]] unsigned variableCount() const { return static_cast<unsigned>(task.start.size()); }
  [[nodiscard]] unsigned activeCount() const { return static_cast<unsigned>(active.size()); }

  SolverTask task{};
  SmoKernel<double> kernel;
  unsigned classes;  // whose signs are searched apart
  // Results per block of a search for the second index, behind the step that follows from it.
  zel::DeviceVector<SmoLowerBeta<double>> stepAndLowers;
  zel::PinnedVector<SmoLowerBeta<double>> stepAndLower;
  SelectionResults found;
  PairStep step{};
  const double* rowOfI = nullptr;

  zel::DeviceVector<double> alpha;
  zel::DeviceVector<double> gradient;
  zel::DeviceVector<double> factors;
  zel::DeviceVector<char2> status;
  zel::DeviceVector<unsigned> activeSet;
  std::vector<unsigned> active;
  std::vector<char2> unmarked;  // the status without marks
  std::vector<char2> marked;
  std::optional<zel::LinearTexture<double>> alphaTexture;
  std::optional<zel::LinearTexture<double>> gradientTexture;
  std::optional<zel::LinearTexture<char2>> statusTexture;

  decltype(&selectSmoWorkingSetKernel<double, true>) selectKernel;
  decltype(&findSmoDeltaKernel<double, true, true>) deltaKernel;
  decltype(&reduceSmoWorkingSetKernel<double, true>) reduceKernel;
  unsigned selectLimit;
  unsigned deltaLimit;
  unsigned reduceLimit;
  unsigned startLimit;
  unsigned updateLimit;
};

}  // namespace zelsvm
