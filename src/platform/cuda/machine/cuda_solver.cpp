#include "platform/cuda/machine/cuda_solver.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "platform/cuda/kernels/device_context.h"
#include "platform/cuda/machine/kernel_symbols.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/cuda/runtime/symbols.h"
#include "rules/kernel_functions.h"

namespace zelsvm {
namespace {

constexpr unsigned searchBlock = 32;
constexpr unsigned sweepBlock = 128;
constexpr std::size_t sharedBytes = searchBlock * sizeof(SmoUpperBeta<double>);  // per class

auto* deltaKernelOf(SVM_KERNEL type, bool nu) {
  const bool unit = withKernel(type, []<typename Function>() { return Function::unitDiagonal; });
  if (nu)
    return unit ? findSmoDeltaKernel<double, true, true> : findSmoDeltaKernel<double, true, false>;
  return unit ? findSmoDeltaKernel<double, false, true> : findSmoDeltaKernel<double, false, false>;
}

}  // namespace

CudaSolver::CudaSolver(DeviceTurns& turns, LinearAlgebra& libraries, SVM_KERNEL kernelType,
                       bool twoGroups)
    : SymbolUser(turns),
      kernel(kernelType, libraries),
      classes(twoGroups ? 2 : 1),
      stepAndLower(2),
      found(classes),
      selectKernel(twoGroups ? selectSmoWorkingSetKernel<double, true>
                             : selectSmoWorkingSetKernel<double, false>),
      deltaKernel(deltaKernelOf(kernelType, twoGroups)),
      reduceKernel(twoGroups ? reduceSmoWorkingSetKernel<double, true>
                             : reduceSmoWorkingSetKernel<double, false>),
      selectLimit(zel::gridLimit(selectKernel, searchBlock, classes * sharedBytes)),
      deltaLimit(zel::gridLimit(deltaKernel, searchBlock, sharedBytes)),
      reduceLimit(zel::gridLimit(reduceKernel, sweepBlock)),
      startLimit(zel::gridLimit(initSmoGradientKernel<double>, sweepBlock)),
      updateLimit(zel::gridLimit(updateSmoGradientKernel<double>, sweepBlock)) {}

void CudaSolver::begin(const SolverTask& newTask, const std::function<void()>& columnsAdded) {
  DeviceTurn turn(*this);
  releaseTextures();
  task = newTask;
  unmarked.resize(variableCount());
  for (unsigned k = 0; k < variableCount(); ++k) unmarked[k] = {0, task.signs[k]};
  marked.resize(variableCount());
  status.assign(unmarked);
  statusTexture.emplace(status);
  alpha.assign(task.start);
  alphaTexture.emplace(alpha);
  factors.assign(task.factors);
  gradient.assign(task.linearTerm);
  gradientTexture.emplace(gradient);
  active.resize(variableCount());
  std::iota(active.begin(), active.end(), 0);
  activeSet.assign(active);
  kernel.initialize(*task.samples, variableCount(), task.cacheMegabytes, task.cacheSharers);
  turn.publish();
  kernel.makeDiagonal();
  if (!task.startsAtZero) addStart(columnsAdded);
}

void CudaSolver::publish() {
  zel::publishSymbol(zelsvm_N, task.samples->rows());
  zel::publishSymbol(zelsvm_Cp, task.Cp);
  zel::publishSymbol(zelsvm_Cn, task.Cn);
  zel::publishSymbol(zelsvm_factors, task.factors.empty() ? nullptr : factors.data());
  publishKernel(task.kernel);
  // begin() has made the textures. NOLINTBEGIN(bugprone-unchecked-optional-access)
  zel::publishSymbol(zelsvm_tx_ys, statusTexture->handle());
  zel::publishSymbol(zelsvm_tx_alpha, alphaTexture->handle());
  zel::publishSymbol(zelsvm_tx_f, gradientTexture->handle());
  // NOLINTEND(bugprone-unchecked-optional-access)
  zel::publishSymbol(zelsvm_tx_norm, kernel.normTexture());
  zel::publishSymbol(zelsvm_cnv_sem, 0);
  zel::publishSymbol(zelsvm_wss_sem, 0);
}

void CudaSolver::addStart(const std::function<void()>& columnsAdded) {
  const std::uint64_t samples = task.samples->rows();
  const std::uint64_t most = kernel.slotCount();
  const zel::LaunchShape shape(zel::gridSize(startLimit, variableCount(), sweepBlock), sweepBlock);
  for (std::uint64_t offset = 0; offset < variableCount(); offset += samples)
    for (std::uint64_t first = 0; first < samples; first += most) {
      const std::uint64_t count = std::min(most, samples - first);
      zel::launch(initSmoGradientKernel<double>, shape, gradient.data(),
                  kernel.computeBlock(first, count), static_cast<unsigned>(kernel.pitch()),
                  static_cast<unsigned>(offset + first), static_cast<unsigned>(count),
                  variableCount());
      columnsAdded();
    }
}

void CudaSolver::releaseTextures() {
  statusTexture.reset();
  alphaTexture.reset();
  gradientTexture.reset();
}

void CudaSolver::end() {
  const DeviceTurn turn(*this);
  releaseTextures();
  kernel.releaseData();
  task = {};
}

void CudaSolver::activate(std::span<const unsigned> ascendingVariables) {
  const DeviceTurn turn(*this);
  active.assign(ascendingVariables.begin(), ascendingVariables.end());
  activeSet.assign(active);
}

void CudaSolver::select(SmoSelection<double>& selection, SmoSelection<double>& second) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  const unsigned grid = zel::gridSize(selectLimit, activeCount(), searchBlock);
  found.resize(grid);
  zel::launch(selectKernel, {grid, searchBlock, classes * sharedBytes}, found.uppers(0),
              found.indices(0), found.uppers(classes - 1), found.indices(classes - 1),
              activeSet.data(), activeCount());
  found.read();
  selection = found.selection(0);
  second = found.selection(classes - 1);
}

PairStep CudaSolver::movePair(const SmoSelection<double>& selection,
                              const SmoSelection<double>& second) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  const double* const row = kernel.getRow(selection.index);
  const double* const row2 = classes == 2 ? kernel.getRow(second.index) : row;
  const unsigned grid = zel::gridSize(deltaLimit, activeCount(), searchBlock);
  stepAndLowers.resize(std::uint64_t{1} + grid);
  auto* const delta = reinterpret_cast<SmoDelta<double>*>(stepAndLowers.data());
  zel::launch(deltaKernel, {grid, searchBlock, sharedBytes}, delta, stepAndLowers.data() + 1,
              found.uppers(0), found.indices(0), found.uppers(classes - 1),
              found.indices(classes - 1), row, row2, alpha.data(), activeSet.data(), activeCount());
  stepAndLowers.download(stepAndLower.span());
  const unsigned j = stepAndLower[1].index;
  if (j == noIndex) return {selection.index, noIndex, 0, 0};
  SmoDelta<double> moved;
  std::memcpy(&moved, &stepAndLower[0], sizeof moved);
  const bool other = classes == 2 && task.signs[j] <= 0;
  rowOfI = other ? row2 : row;
  step = {other ? second.index : selection.index, j, moved.deltaI, moved.deltaJ};
  return step;
}

void CudaSolver::updateGradient() {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  const double* const rowOfJ = kernel.getRow(step.j);
  const auto* const delta = reinterpret_cast<const SmoDelta<double>*>(stepAndLowers.data());
  zel::launch(updateSmoGradientKernel<double>,
              {zel::gridSize(updateLimit, variableCount(), sweepBlock), sweepBlock},
              gradient.data(), delta, step.i, rowOfI, step.j, rowOfJ, variableCount());
}

void CudaSolver::markShrinkable(const SmoSelection<double>& selection,
                                const SmoSelection<double>& second, std::span<signed char> marks) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  zel::launch(reduceKernel, {zel::gridSize(reduceLimit, activeCount(), sweepBlock), sweepBlock},
              status.data(), selection.beta.up, second.beta.up, selection.beta.low, second.beta.low,
              activeSet.data(), activeCount());
  status.download(marked);
  status.upload(unmarked);
  for (const unsigned t : active)
    if (marked[t].x != 0) marks[t] = 1;
}

void CudaSolver::read(std::span<double> multipliers, std::span<double> gradientValues) {
  const DeviceTurn turn(*this);
  alpha.download(multipliers);
  gradient.download(gradientValues);
}

}  // namespace zelsvm
