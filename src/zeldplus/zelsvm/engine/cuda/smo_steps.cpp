#include "zeldplus/zelsvm/engine/smo_steps.h"

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/smo_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned sweepBlock = 128;
constexpr unsigned searchBlock = 32;
constexpr std::size_t deltaSharedBytes = 512;

template <typename... Parameters>
unsigned gridLimit(void (*kernel)(Parameters...), unsigned block, std::size_t sharedBytes) {
  return static_cast<unsigned>(zel::residentBlocks(kernel, block, sharedBytes));
}

// One launch per step. Entries 0 … grid - 1 of the selection's results belong to the core variant's
// one selection or to the positive class, the next grid entries to the negative class.
template <typename T, bool nu>
class DeviceSmoSteps : public SmoSteps<T> {
 public:
  // The radial kernel's diagonal is 1, so its variant never reads one.
  explicit DeviceSmoSteps(SVM_KERNEL kernelType)
      : deltaKernel(kernelType == SVM_KERNEL_RADIAL ? findSmoDeltaKernel<T, nu, true>
                                                    : findSmoDeltaKernel<T, nu, false>),
        deltaLimit(gridLimit(deltaKernel, searchBlock, deltaSharedBytes)) {}

  void begin(const SmoVariables<T>& variables) override { all = variables; }

  void addColumns(const T* columns, std::uint64_t ld, unsigned first, unsigned count) override {
    zel::launch(initSmoGradientKernel<T>,
                {zel::gridSize(initLimit, all.count, sweepBlock), sweepBlock}, all.gradient,
                columns, static_cast<unsigned>(ld), first, count, all.count);
  }

  void activate(unsigned activeCount) override { active = activeCount; }

  void select(SmoSelection<T>& selection, SmoSelection<T>& second) override {
    selectGrid = zel::gridSize(selectLimit, active, searchBlock);
    upperBlocks.resize(classes * selectGrid);
    indexBlocks.resize(classes * selectGrid);
    zel::launch(selectSmoWorkingSetKernel<T, nu>, {selectGrid, searchBlock, selectSharedBytes},
                upperBlocks.data(), indexBlocks.data(), secondUpper(), secondIndex(), all.activeSet,
                active);
    selection = readSelection(0);
    second = nu ? readSelection(selectGrid) : selection;
  }

  unsigned findDelta(const SmoSelection<T>& /*selection*/, const SmoSelection<T>& /*second*/,
                     const T* row, const T* row2) override {
    const unsigned grid = zel::gridSize(deltaLimit, active, searchBlock);
    lowerBlocks.resize(grid);
    zel::launch(deltaKernel, {grid, searchBlock, deltaSharedBytes}, all.delta, lowerBlocks.data(),
                upperBlocks.data(), indexBlocks.data(), secondUpper(), secondIndex(), row, row2,
                all.alpha, all.activeSet, active);
    lowerHost.copyFrom(lowerBlocks, 0, 0, 1);
    return lowerHost.data()->index;
  }

  void updateGradient(const SmoPair<T>& pair) override {
    zel::launch(updateSmoGradientKernel<T>,
                {zel::gridSize(updateLimit, all.count, sweepBlock), sweepBlock}, all.gradient,
                all.delta, pair.i, pair.rowI, pair.j, pair.rowJ, all.count);
  }

  void reduce(const SmoSelection<T>& selection, const SmoSelection<T>& second) override {
    zel::launch(reduceSmoWorkingSetKernel<T, nu>,
                {zel::gridSize(reduceLimit, active, sweepBlock), sweepBlock}, all.status,
                selection.beta.up, second.beta.up, selection.beta.low, second.beta.low,
                all.activeSet, active);
  }

  void finish() override {}

  // Where the next rows lie is known on the device only.
  void likelySamples(std::vector<std::uint64_t>& samples, unsigned /*most*/,
                     const std::vector<std::uint32_t>& /*isKnown*/,
                     PairKernel& /*kernel*/) override {
    samples.clear();
  }

 private:
  static constexpr unsigned classes = nu ? 2 : 1;
  static constexpr std::size_t selectSharedBytes = classes * std::size_t{512};

  SmoUpperBeta<T>* secondUpper() { return upperBlocks.data() + (nu ? selectGrid : 0); }
  unsigned* secondIndex() { return indexBlocks.data() + (nu ? selectGrid : 0); }

  SmoSelection<T> readSelection(unsigned entry) {
    upperHost.copyFrom(upperBlocks, 0, entry, 1);
    indexHost.copyFrom(indexBlocks, 0, entry, 1);
    return {*indexHost.data(), *upperHost.data()};
  }

  SmoVariables<T> all{};
  unsigned active = 0;
  unsigned selectGrid = 0;
  zel::DeviceVector<SmoUpperBeta<T>> upperBlocks;
  zel::DeviceVector<unsigned> indexBlocks;
  zel::DeviceVector<SmoLowerBeta<T>> lowerBlocks;
  HostVector<SmoUpperBeta<T>> upperHost{1, zel::MemoryKind::pinned};
  HostVector<unsigned> indexHost{1, zel::MemoryKind::pinned};
  HostVector<SmoLowerBeta<T>> lowerHost{1, zel::MemoryKind::pinned};
  decltype(&findSmoDeltaKernel<T, nu, true>) deltaKernel;
  unsigned initLimit = gridLimit(initSmoGradientKernel<T>, sweepBlock, 0);
  unsigned updateLimit = gridLimit(updateSmoGradientKernel<T>, sweepBlock, 0);
  unsigned reduceLimit = gridLimit(reduceSmoWorkingSetKernel<T, nu>, sweepBlock, 0);
  unsigned selectLimit =
      gridLimit(selectSmoWorkingSetKernel<T, nu>, searchBlock, selectSharedBytes);
  unsigned deltaLimit;
};

}  // namespace

template <>
std::unique_ptr<SmoSteps<double>> makeSmoSteps(SVM_KERNEL kernelType, bool nu) {
  if (nu) return std::make_unique<DeviceSmoSteps<double, true>>(kernelType);
  return std::make_unique<DeviceSmoSteps<double, false>>(kernelType);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
