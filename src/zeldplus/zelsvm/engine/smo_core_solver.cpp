#include "zeldplus/zelsvm/engine/smo_core_solver.h"

#include <limits>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/zelsvm/engine/smo_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned searchBlock = 32;
constexpr std::size_t searchSharedBytes = 512;
constexpr unsigned reduceBlock = 128;

// The radial kernel's diagonal is 1, so its variant never reads one.
template <typename T>
auto* deltaKernel(SVM_KERNEL kernelType) {
  return kernelType == SVM_KERNEL_RADIAL ? findSmoDeltaKernel<T, false, true>
                                         : findSmoDeltaKernel<T, false, false>;
}

}  // namespace

template <typename T>
SmoCoreSolver<T>::SmoCoreSolver(const SvmContext<T>& params)
    : SmoBaseSolver<T>(params),
      upperHost(1, zel::MemoryKind::pinned),
      indexHost(1, zel::MemoryKind::pinned),
      selectLimit(static_cast<unsigned>(zel::residentBlocks(selectSmoWorkingSetKernel<T, false>,
                                                            searchBlock, searchSharedBytes))),
      deltaLimit(static_cast<unsigned>(
          zel::residentBlocks(deltaKernel<T>(params.kernelType), searchBlock, searchSharedBytes))),
      reduceLimit(static_cast<unsigned>(
          zel::residentBlocks(reduceSmoWorkingSetKernel<T, false>, reduceBlock, 0))) {}

template <typename T>
T SmoCoreSolver<T>::selectWorkingSet(SmoSelection<T>& selection, SmoSelection<T>& second,
                                     unsigned activeCount) {
  const unsigned grid = zel::gridSize(selectLimit, activeCount, searchBlock);
  upperBlocks.resize(grid);
  indexBlocks.resize(grid);
  zel::launch(selectSmoWorkingSetKernel<T, false>, {grid, searchBlock, searchSharedBytes},
              upperBlocks.data(), indexBlocks.data(), upperBlocks.data(), indexBlocks.data(),
              this->activeSet.data(), activeCount);
  upperHost.copyFrom(upperBlocks, 0, 0, 1);
  indexHost.copyFrom(indexBlocks, 0, 0, 1);
  selection = {*indexHost.data(), *upperHost.data()};
  second = selection;
  constexpr T infinity = std::numeric_limits<T>::infinity();
  const auto [up, low] = selection.beta;
  if (selection.index == noIndex || up == -infinity || low == infinity)
    throw zel::AppException("Failed to optimize the svm.");
  return up - low;
}

template <typename T>
SmoPair<T> SmoCoreSolver<T>::findDelta(const HostVector<char2>& /*status*/,
                                       const SmoSelection<T>& selection,
                                       const SmoSelection<T>& /*second*/, unsigned activeCount) {
  const T* const rowI = this->kernel.getRow(selection.index);
  const unsigned grid = zel::gridSize(deltaLimit, activeCount, searchBlock);
  lowerBlocks.resize(grid);
  zel::launch(deltaKernel<T>(this->params->kernelType), {grid, searchBlock, searchSharedBytes},
              this->delta.data(), lowerBlocks.data(), upperBlocks.data(), indexBlocks.data(),
              upperBlocks.data(), indexBlocks.data(), rowI, rowI, this->alpha.data(),
              this->activeSet.data(), activeCount);
  const unsigned j = this->readSecondIndex(lowerBlocks);
  return {selection.index, j, rowI, this->kernel.getRow(j)};
}

template <typename T>
void SmoCoreSolver<T>::reduceWorkingSet(const SmoSelection<T>& selection,
                                        const SmoSelection<T>& second, unsigned activeCount) {
  const unsigned grid = zel::gridSize(reduceLimit, activeCount, reduceBlock);
  zel::launch(reduceSmoWorkingSetKernel<T, false>, {grid, reduceBlock}, this->status.data(),
              selection.beta.up, second.beta.up, selection.beta.low, second.beta.low,
              this->activeSet.data(), activeCount);
}

template class SmoCoreSolver<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
