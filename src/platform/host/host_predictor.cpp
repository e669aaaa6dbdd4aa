#include "platform/host/host_predictor.h"

#include <algorithm>
#include <vector>

#include "base/memory.h"
#include "base/vectors.h"
#include "platform/host/block/kernel_block.h"
#include "rules/pair_order.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

constexpr double nanosecondsPerAdded = 2.5;
constexpr std::uint64_t minBlockSize = 64;
// Vectors are packed for each block, which costs as much as their products with some ten samples.
constexpr std::uint64_t maxBlockSize = 2048;
// So few samples would leave most of a block's columns empty: there the vectors are the columns.
constexpr std::uint64_t fewSamples = 4;
// The same where the vectors are laid out already.
constexpr std::uint64_t fewSamplesThen = 32;
// Decision values of a block, which many functions make large.
constexpr std::uint64_t maxValueBytes = std::uint64_t{64} << 20;
// Samples of a block, laid out densely: sparse ones may take less.
constexpr std::uint64_t maxDenseBytes = std::uint64_t{16} << 20;

// Many samples are a block's columns. Its rows are the vectors, class by class: one has a
// coefficient per other class, so that a class has its share in the functions of all its pairs.
class HostPredictor : public PredictorMachine {
 public:
  explicit HostPredictor(const DecisionTask& newTask)
      : task(newTask), classes(task.classStarts.size() - 1), shares(classes - 1) {
    for (std::uint64_t cls = 0; cls < classes; ++cls)
      for (std::uint64_t j = 0; j < shares.size(); ++j)
        places.push_back(static_cast<unsigned>(functionOf(cls, j)));
  }

  std::uint64_t blockSize(const zelmag::AbstractMatrix<double>& test) override {
    if (test.rows() <= minBlockSize) return minBlockSize;
    const std::uint64_t available = zel::obtainableMemory() / 4;
    const std::uint64_t valueBytes = 2 * task.rho.size() * sizeof(double);
    const std::uint64_t denseBytes = std::max<std::uint64_t>(test.cols(), 1) * sizeof(double);
    const std::uint64_t fitting = std::min({std::min(available, maxValueBytes) / valueBytes,
                                            std::min(available, maxDenseBytes) / denseBytes});
    return std::clamp(fitting, minBlockSize, maxBlockSize);
  }

  void decide(const zelmag::AbstractMatrix<double>& test, std::uint64_t first, std::uint64_t count,
              double* values) override {
    // Given values lie in rows of the samples.
    if (test.kernelValues() != nullptr || count <= (holdsVectors ? fewSamplesThen : fewSamples))
      return decideFew({test, first, count}, values);
    block.assign({test, first, count}, task.kernel);
    const std::uint64_t functions = task.rho.size();
    const std::uint64_t pitch = blockPitch<double>(count);
    sums.resize(functions * pitch);
    std::fill_n(sums.data(), functions * pitch, 0.0);
    for (std::uint64_t cls = 0; cls < classes; ++cls) addClass(cls, pitch);
    for (std::uint64_t f = 0; f < functions; ++f)
      std::transform(sums.data() + f * pitch, sums.data() + f * pitch + count, values + f * count,
                     [rho = task.rho[f]](double sum) { return sum - rho; });
  }

 private:
  // The function of the pair of a class and the j-th of the others.
  [[nodiscard]] std::uint64_t functionOf(std::uint64_t cls, std::uint64_t j) const {
    return cls <= j ? pairIndex(cls, j + 1, classes) : pairIndex(j, cls, classes);
  }

  void addClass(std::uint64_t cls, std::uint64_t pitch) {
    for (std::uint64_t j = 0; j < shares.size(); ++j)
      shares[j] = sums.data() + functionOf(cls, j) * pitch;
    const std::uint64_t start = task.classStarts[cls];
    const std::uint64_t count = task.classStarts[cls + 1] - start;
    block.compute(
        {*task.vectors, start, count},
        {{}, task.coefficients.subspan(start * shares.size(), count * shares.size()), shares});
  }

  // The same operations in the same order, and so the same bits.
  void decideFew(const SampleChoice& samples, double* values) {
    const std::uint64_t count = samples.count();
    const std::uint64_t pitch = blockPitch<double>(task.vectors->rows());
    if (!holdsVectors) vectors.assign(SampleChoice(*task.vectors), task.kernel);
    holdsVectors = true;
    kernelValues.resize(count * pitch);
    std::vector<double*> stored(count);
    for (std::uint64_t c = 0; c < count; ++c) stored[c] = kernelValues.data() + c * pitch;
    vectors.compute(samples, {stored, {}, {}});
    const std::uint64_t functions = task.rho.size();
    sums.resize(count * functions);
    const double perSample = nanosecondsPerAdded * static_cast<double>(task.coefficients.size());
    zel::forEachChunk(count, 1, perSample, [&](std::uint64_t c, std::uint64_t /*next*/) {
      double* const own = sums.data() + c * functions;
      std::fill_n(own, functions, 0.0);
      for (std::uint64_t cls = 0; cls < classes; ++cls) addClass(cls, stored[c], own);
      for (std::uint64_t f = 0; f < functions; ++f) values[f * count + c] = own[f] - task.rho[f];
    });
  }

  void addClass(std::uint64_t cls, const double* kernel, double* own) const {
    const std::uint64_t others = shares.size();
    const auto add = blockSweeps<double>().addColumn;
    for (std::uint64_t v = task.classStarts[cls]; v < task.classStarts[cls + 1]; ++v)
      add(task.coefficients.data() + v * others, places.data() + cls * others, 0, others, kernel[v],
          own);
  }

  DecisionTask task;
  std::uint64_t classes;
  KernelBlock<double> vectors;
  bool holdsVectors = false;
  HostVector<double> kernelValues;
  KernelBlock<double> block;
  HostVector<double> sums;       // by function, or of few samples by sample
  std::vector<unsigned> places;  // the functions of each class's coefficients
  std::vector<double*> shares;   // of a class, by the pair's other class
};

}  // namespace

std::unique_ptr<PredictorMachine> makeHostPredictor(const DecisionTask& task) {
  return std::make_unique<HostPredictor>(task);
}

}  // namespace zelsvm
