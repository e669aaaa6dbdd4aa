// What a solver asks for, on CUDA: two launches and two answers an iteration, the rows apart.
#pragma once

#include <optional>
#include <vector>

#include "platform/cuda/kernels/smo_kernels.h"
#include "platform/cuda/machine/device_turns.h"
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
  PairStep movePair(const SmoSelection<double>& selection,
                    const SmoSelection<double>& second) override;
  // With the next selection at once.
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
  void launchSelection(const GradientStep& gradientStep);
  [[nodiscard]] FirstOfPair firstOf(const SmoSelection<double>& selection);

  SolverTask task{};
  SmoKernel<double> kernel;
  unsigned classes;                           // whose signs are searched apart
  zel::DeviceVector<Extremes<2>> selections;  // by block of a search
  zel::DeviceVector<Partner> partners;
  zel::Answer<Extremes<2>> selected;
  zel::Answer<MovedPair> moved;
  bool isSelecting = false;  // an answer to come is that of the present state
  PairStep step{};
  const double* rowOfI = nullptr;

  zel::DeviceVector<double> alpha;
  zel::DeviceVector<double> gradient;
  zel::DeviceVector<double> factors;
  zel::DeviceVector<char2> status;
  std::vector<char2> hostStatus;
  std::vector<unsigned> active;
  zel::DeviceVector<signed char> marksThere;
  std::vector<signed char> marksHere;
  std::optional<zel::LinearTexture<double>> alphaTexture;
  std::optional<zel::LinearTexture<double>> gradientTexture;
  std::optional<zel::LinearTexture<char2>> statusTexture;

  decltype(&selectSmoWorkingSetKernel<true>) selectKernel;
  decltype(&findSmoDeltaKernel<true, true>) deltaKernel;
  decltype(&reduceSmoWorkingSetKernel<true>) reduceKernel;
  unsigned selectLimit;
  unsigned deltaLimit;
  unsigned reduceLimit;
  unsigned startLimit;
};

}  // namespace zelsvm
