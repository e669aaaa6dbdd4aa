// The solvers' steps on a GPU: a launch each, and one read-back where the host must decide.
#include "zeldplus/zelsvm/engine/smo_steps.h"

#include <cstring>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/smo_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned searchBlock = 32;
constexpr unsigned sweepBlock = 128;
constexpr std::size_t deltaSharedBytes = 512;

template <typename... Parameters>
unsigned gridLimit(void (*kernel)(Parameters...), unsigned blockSize, std::size_t sharedBytes) {
  return static_cast<unsigned>(
      zel::residentBlocks(kernel, static_cast<int>(blockSize), sharedBytes));
}

// What a selection's blocks found, entry 0 being the result: the indices of all classes before
// their extremes, so that one copy fetches every entry 0.
template <typename T, unsigned classes>
struct SelectionResults {
  void resize(unsigned newBlocks) {
    blocks = newBlocks;
    memory.resize(upperOffset(classes));
    host.resize(upperOffset(classes));
  }
  unsigned* indices(unsigned cls) {
    return reinterpret_cast<unsigned*>(memory.data() + indexOffset(cls));
  }
  SmoUpperBeta<T>* uppers(unsigned cls) {
    return reinterpret_cast<SmoUpperBeta<T>*>(memory.data() + upperOffset(cls));
  }
  void read() { host.copyFrom(memory, 0, 0, upperOffset(classes - 1) + sizeof(SmoUpperBeta<T>)); }
  // Of what was last read.
  [[nodiscard]] SmoSelection<T> selection(unsigned cls) const {
    SmoSelection<T> selection;
    std::memcpy(&selection.index, host.data() + indexOffset(cls), sizeof selection.index);
    std::memcpy(&selection.beta, host.data() + upperOffset(cls), sizeof selection.beta);
    return selection;
  }

  unsigned blocks = 0;

 private:
  [[nodiscard]] std::uint64_t indexOffset(unsigned cls) const {
    const std::uint64_t bytes = blocks * sizeof(unsigned);
    return cls * ((bytes + sizeof(SmoUpperBeta<T>) - 1) & ~(sizeof(SmoUpperBeta<T>) - 1));
  }
  [[nodiscard]] std::uint64_t upperOffset(unsigned cls) const {
    return indexOffset(classes) + cls * blocks * sizeof(SmoUpperBeta<T>);
  }

  zel::DeviceVector<unsigned char> memory;
  HostVector<unsigned char> host{zel::MemoryKind::pinned};
};

template <typename T, bool nu>
class DeviceSmoSteps : public SmoSteps<T> {
 public:
  explicit DeviceSmoSteps(SVM_KERNEL kernelType)
      : deltaKernel(kernelType == SVM_KERNEL_RADIAL ? findSmoDeltaKernel<T, nu, true>
                                                    : findSmoDeltaKernel<T, nu, false>),
        addLimit(gridLimit(initSmoGradientKernel<T>, sweepBlock, 0)),
        updateLimit(gridLimit(updateSmoGradientKernel<T>, sweepBlock, 0)),
        reduceLimit(gridLimit(reduceSmoWorkingSetKernel<T, nu>, sweepBlock, 0)),
        selectLimit(gridLimit(selectSmoWorkingSetKernel<T, nu>, searchBlock, selectSharedBytes)),
        deltaLimit(gridLimit(deltaKernel, searchBlock, deltaSharedBytes)) {}

  void begin(const SmoVariables<T>& variables) override { all = variables; }

  void addColumns(const T* columns, std::uint64_t ld, unsigned first, unsigned count) override {
    zel::launch(initSmoGradientKernel<T>,
                {zel::gridSize(addLimit, all.count, sweepBlock), sweepBlock}, all.gradient, columns,
                static_cast<unsigned>(ld), first, count, all.count);
  }

  void activate(unsigned activeCount) override { active = activeCount; }

  void select(SmoSelection<T>& selection, SmoSelection<T>& second) override {
    found.resize(zel::gridSize(selectLimit, active, searchBlock));
    zel::launch(selectSmoWorkingSetKernel<T, nu>, {found.blocks, searchBlock, selectSharedBytes},
                found.uppers(0), found.indices(0), found.uppers(classes - 1),
                found.indices(classes - 1), all.activeSet, active);
    found.read();
    selection = found.selection(0);
    second = found.selection(classes - 1);
  }

  unsigned findDelta(const SmoSelection<T>& /*selection*/, const SmoSelection<T>& /*second*/,
                     const T* row, const T* row2) override {
    const unsigned grid = zel::gridSize(deltaLimit, active, searchBlock);
    lowers.resize(grid);
    zel::launch(deltaKernel, {grid, searchBlock, deltaSharedBytes}, all.delta, lowers.data(),
                found.uppers(0), found.indices(0), found.uppers(classes - 1),
                found.indices(classes - 1), row, row2, all.alpha, all.activeSet, active);
    lowerHost.copyFrom(lowers, 0, 0, 1);
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

  void storeGradient() override {}

  // A row at a time: see the kernel rows.
  void likelySamples(std::vector<std::uint64_t>& samples, unsigned /*most*/,
                     const std::vector<std::uint32_t>& /*isKnown*/,
                     PairKernel& /*kernel*/) override {
    samples.clear();
  }

 private:
  static constexpr unsigned classes = nu ? 2 : 1;
  static constexpr std::size_t selectSharedBytes = 512 * classes;

  SmoVariables<T> all{};
  unsigned active = 0;
  SelectionResults<T, classes> found;
  zel::DeviceVector<SmoLowerBeta<T>> lowers;  // per block of a launch; entry 0 is the result
  HostVector<SmoLowerBeta<T>> lowerHost{1, zel::MemoryKind::pinned};
  decltype(&findSmoDeltaKernel<T, nu, true>) deltaKernel;
  unsigned addLimit;
  unsigned updateLimit;
  unsigned reduceLimit;
  unsigned selectLimit;
  unsigned deltaLimit;
};

}  // namespace

template <>
std::unique_ptr<SmoSteps<double>> makeSmoSteps(SVM_KERNEL kernelType, bool nu) {
  if (nu) return std::make_unique<DeviceSmoSteps<double, true>>(kernelType);
  return std::make_unique<DeviceSmoSteps<double, false>>(kernelType);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
