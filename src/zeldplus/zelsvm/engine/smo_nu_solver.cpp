#include "zeldplus/zelsvm/engine/smo_nu_solver.h"

#include <cmath>
#include <limits>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/zelsvm/engine/smo_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned searchBlock = 32;
constexpr std::size_t selectSharedBytes = 1024;
constexpr std::size_t deltaSharedBytes = 512;
constexpr unsigned reduceBlock = 128;

template <typename T>
auto* deltaKernel(SVM_KERNEL kernelType) {
  return kernelType == SVM_KERNEL_RADIAL ? findSmoDeltaKernel<T, true, true>
                                         : findSmoDeltaKernel<T, true, false>;
}

template <typename T>
bool isFeasible(const SmoSelection<T>& selection) {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  return selection.index != noIndex && selection.beta.up != -infinity &&
         selection.beta.low != infinity;
}

// Offset of one class: the mean gradient of its free variables, or the middle of what the bounded
// ones leave open.
template <typename T>
T classOffset(const GradientBounds<T>& bounds) {
  if (bounds.count > 0) return bounds.sum / static_cast<T>(bounds.count);
  return (bounds.minLower + bounds.maxUpper) / 2;
}

}  // namespace

template <typename T>
SmoNuSolver<T>::SmoNuSolver(const SvmContext<T>& params)
    : SmoBaseSolver<T>(params),
      upperHost(1, zel::MemoryKind::pinned),
      indexHost(1, zel::MemoryKind::pinned),
      selectLimit(static_cast<unsigned>(
          zel::residentBlocks(selectSmoWorkingSetKernel<T, true>, searchBlock, selectSharedBytes))),
      deltaLimit(static_cast<unsigned>(
          zel::residentBlocks(deltaKernel<T>(params.kernelType), searchBlock, deltaSharedBytes))),
      reduceLimit(static_cast<unsigned>(
          zel::residentBlocks(reduceSmoWorkingSetKernel<T, true>, reduceBlock, 0))) {}

template <typename T>
SmoSelection<T> SmoNuSolver<T>::readSelection(unsigned entry) {
  upperHost.copyFrom(upperBlocks, 0, entry, 1);
  indexHost.copyFrom(indexBlocks, 0, entry, 1);
  return {*indexHost.data(), *upperHost.data()};
}

template <typename T>
T SmoNuSolver<T>::selectWorkingSet(SmoSelection<T>& positive, SmoSelection<T>& negative,
                                   unsigned activeCount) {
  selectGrid = zel::gridSize(selectLimit, activeCount, searchBlock);
  upperBlocks.resize(std::uint64_t{2} * selectGrid);
  indexBlocks.resize(std::uint64_t{2} * selectGrid);
  zel::launch(selectSmoWorkingSetKernel<T, true>, {selectGrid, searchBlock, selectSharedBytes},
              upperBlocks.data(), indexBlocks.data(), upperBlocks.data() + selectGrid,
              indexBlocks.data() + selectGrid, this->activeSet.data(), activeCount);
  positive = readSelection(0);
  negative = readSelection(selectGrid);
  if (!isFeasible(positive) || !isFeasible(negative))
    throw zel::AppException("Error: there is no feasible solution for the nu value.");
  return std::fmax(positive.beta.up - positive.beta.low, negative.beta.up - negative.beta.low);
}

template <typename T>
SmoPair<T> SmoNuSolver<T>::findDelta(const HostVector<char2>& status,
                                     const SmoSelection<T>& positive,
                                     const SmoSelection<T>& negative, unsigned activeCount) {
  const T* const positiveRow = this->kernel.getRow(positive.index);
  const T* const negativeRow = this->kernel.getRow(negative.index);
  const unsigned grid = zel::gridSize(deltaLimit, activeCount, searchBlock);
  lowerBlocks.resize(grid);
  zel::launch(deltaKernel<T>(this->params->kernelType), {grid, searchBlock, deltaSharedBytes},
              this->delta.data(), lowerBlocks.data(), upperBlocks.data(), indexBlocks.data(),
              upperBlocks.data() + selectGrid, indexBlocks.data() + selectGrid, positiveRow,
              negativeRow, this->alpha.data(), this->activeSet.data(), activeCount);
  const unsigned j = this->readSecondIndex(lowerBlocks);
  const bool isPositive = status.at(j)->y > 0;
  return {isPositive ? positive.index : negative.index, j, isPositive ? positiveRow : negativeRow,
          this->kernel.getRow(j)};
}

template <typename T>
void SmoNuSolver<T>::reduceWorkingSet(const SmoSelection<T>& positive,
                                      const SmoSelection<T>& negative, unsigned activeCount) {
  const unsigned grid = zel::gridSize(reduceLimit, activeCount, reduceBlock);
  zel::launch(reduceSmoWorkingSetKernel<T, true>, {grid, reduceBlock}, this->status.data(),
              positive.beta.up, negative.beta.up, positive.beta.low, negative.beta.low,
              this->activeSet.data(), activeCount);
}

template <typename T>
T SmoNuSolver<T>::calculateRho(T& r, const GradientBounds<T>& positive,
                               const GradientBounds<T>& negative) const {
  const T positiveOffset = classOffset(positive);
  const T negativeOffset = classOffset(negative);
  r = (positiveOffset + negativeOffset) / 2;
  return (positiveOffset - negativeOffset) / 2;
}

template class SmoNuSolver<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
