#include "platform/cuda/machine/cuda_solver.h"

#include <algorithm>
#include <bit>
#include <numeric>

#include "platform/cuda/kernels/device_context.h"
#include "platform/cuda/machine/kernel_symbols.h"
#include "platform/cuda/runtime/launch.h"
#include "platform/cuda/runtime/symbols.h"
#include "rules/kernel_functions.h"

namespace zelsvm {
namespace {

constexpr unsigned sweepBlock = 128;
constexpr std::size_t sharedBytes = searchThreads * sizeof(Extremes<2>);
// Small problems so have a single block, which waits for no other.
constexpr unsigned variablesPerThread = 4;

zel::LaunchShape searchShape(unsigned limit, unsigned variables, std::size_t entryBytes) {
  constexpr unsigned leastThreads = 32;
  const unsigned wanted = (variables + variablesPerThread - 1) / variablesPerThread;
  const unsigned threads = std::clamp(std::bit_ceil(wanted), leastThreads, searchThreads);
  return {zel::gridSize(limit, wanted, threads), threads, threads * entryBytes};
}

auto* deltaKernelOf(SVM_KERNEL type, bool nu) {
  const bool unit = withKernel(type, []<typename Function>() { return Function::unitDiagonal; });
  if (nu) return unit ? findSmoDeltaKernel<true, true> : findSmoDeltaKernel<true, false>;
  return unit ? findSmoDeltaKernel<false, true> : findSmoDeltaKernel<false, false>;
}

// Few blocks, as the last one folds what the others found.
template <typename... Parameters>
unsigned searchLimit(void (*kernel)(Parameters...), std::size_t shared) {
  return std::min(zel::gridLimit(kernel, searchThreads, shared),
                  static_cast<unsigned>(zel::multiProcessorCount()));
}

}  // namespace

CudaSolver::CudaSolver(DeviceTurns& turns, LinearAlgebra& libraries, SVM_KERNEL kernelType,
                       bool twoGroups)
    : SymbolUser(turns),
      kernel(kernelType, libraries),
      classes(twoGroups ? 2 : 1),
      selectKernel(twoGroups ? selectSmoWorkingSetKernel<true> : selectSmoWorkingSetKernel<false>),
      deltaKernel(deltaKernelOf(kernelType, twoGroups)),
      reduceKernel(twoGroups ? reduceSmoWorkingSetKernel<true> : reduceSmoWorkingSetKernel<false>),
      selectLimit(searchLimit(selectKernel, sharedBytes)),
      deltaLimit(searchLimit(deltaKernel, 0)),
      reduceLimit(zel::gridLimit(reduceKernel, sweepBlock)),
      startLimit(zel::gridLimit(initSmoGradientKernel<double>, sweepBlock)) {
  selections.resize(selectLimit);
  partners.resize(deltaLimit);
}

void CudaSolver::begin(const SolverTask& newTask, const std::function<void()>& columnsAdded) {
  DeviceTurn turn(*this);
  releaseTextures();
  task = newTask;
  hostStatus.resize(variableCount());
  for (unsigned k = 0; k < variableCount(); ++k) hostStatus[k] = {1, task.signs[k]};
  marksHere.resize(variableCount());
  marksThere.resize(variableCount());
  isSelecting = false;
  status.assign(hostStatus);
  statusTexture.emplace(status);
  alpha.assign(task.start);
  alphaTexture.emplace(alpha);
  factors.assign(task.factors);
  gradient.assign(task.linearTerm);
  gradientTexture.emplace(gradient);
  active.resize(variableCount());
  std::iota(active.begin(), active.end(), 0);
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
  for (const unsigned t : active) hostStatus[t].x = 0;
  active.assign(ascendingVariables.begin(), ascendingVariables.end());
  for (const unsigned t : active) hostStatus[t].x = 1;
  status.upload(hostStatus);
  isSelecting = false;
}

void CudaSolver::launchSelection(const GradientStep& gradientStep) {
  zel::launch(selectKernel, searchShape(selectLimit, variableCount(), sizeof(Extremes<2>)),
              selections.data(), selected.place(), selected.nextTicket(), gradient.data(),
              gradientStep, variableCount());
  isSelecting = true;
}

void CudaSolver::select(SmoSelection<double>& selection, SmoSelection<double>& second) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  if (!isSelecting) launchSelection({nullptr, nullptr, 0, 0});
  const Extremes<2>& found = selected.await();
  isSelecting = false;
  selection = {found.index[0], found.beta[0]};
  second = {found.index[classes - 1], found.beta[classes - 1]};
}

FirstOfPair CudaSolver::firstOf(const SmoSelection<double>& selection) {
  return {kernel.getRow(selection.index), selection.beta.up, selection.index};
}

PairStep CudaSolver::movePair(const SmoSelection<double>& selection,
                              const SmoSelection<double>& second) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  const FirstOfPair first = firstOf(selection);
  const FirstOfPair firstOfSecond = classes == 2 ? firstOf(second) : first;
  zel::launch(deltaKernel, searchShape(deltaLimit, variableCount(), 0), partners.data(),
              moved.place(), moved.nextTicket(), first, firstOfSecond, alpha.data(),
              variableCount());
  isSelecting = false;
  const auto [j, delta] = moved.await();
  if (j == noIndex) return {selection.index, noIndex, 0, 0};
  const FirstOfPair& used = classes == 2 && task.signs[j] <= 0 ? firstOfSecond : first;
  rowOfI = used.row;
  step = {used.index, j, delta.deltaI, delta.deltaJ};
  return step;
}

void CudaSolver::updateGradient() {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  launchSelection({rowOfI, kernel.getRow(step.j), task.signs[step.i] * step.deltaI,
                   task.signs[step.j] * step.deltaJ});
}

void CudaSolver::markShrinkable(const SmoSelection<double>& selection,
                                const SmoSelection<double>& second, std::span<signed char> marks) {
  DeviceTurn turn(*this);
  turn.publishIfLost();
  zel::launch(reduceKernel, {zel::gridSize(reduceLimit, variableCount(), sweepBlock), sweepBlock},
              marksThere.data(), selection.beta.up, second.beta.up, selection.beta.low,
              second.beta.low, variableCount());
  marksThere.download(marksHere);
  for (const unsigned t : active)
    if (marksHere[t] != 0) marks[t] = 1;
}

void CudaSolver::read(std::span<double> multipliers, std::span<double> gradientValues) {
  const DeviceTurn turn(*this);
  alpha.download(multipliers);
  gradient.download(gradientValues);
}

}  // namespace zelsvm
