#include "platform/host/host_predictor.h"

#include <algorithm>

#include "base/memory.h"
#include "base/vectors.h"
#include "platform/host/products/blas.h"
#include "platform/host/products/block_products.h"
#include "platform/host/products/dense_product.h"
#include "platform/host/sweeps/host_kernel.h"
#include "rules/pair_order.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

constexpr std::uint64_t minBlockSize = 4;
constexpr std::uint64_t maxBlockSize = 256;
// Decision values of a block, which many functions make large.
constexpr std::uint64_t maxValueBytes = std::uint64_t{64} << 20;
// Sparse rows of a block, laid out densely: the data themselves may take less.
constexpr std::uint64_t maxDenseBytes = std::uint64_t{16} << 20;

// A tile of kernel values stays in the second-level cache from its transform to its product.
constexpr std::uint64_t tileSamples = 32;
constexpr std::uint64_t tileVectors = 512;
constexpr double nanosecondsPerMultiplication = 0.06;

// A vector has one coefficient per other class, side by side, so that a class's kernel values times
// its coefficients are its share in the functions of all its pairs.
class HostPredictor : public PredictorMachine {
 public:
  explicit HostPredictor(const DecisionTask& newTask)
      : task(newTask),
        kernel(task.kernel),
        vectorProducts(*task.vectors),
        pitch(zel::roundedCapacity(task.vectors->rows())),
        classes(task.classStarts.size() - 1) {}

  std::uint64_t blockSize(const zelmag::AbstractMatrix<double>& test) override {
    const std::uint64_t available = zel::obtainableMemory() / 2;
    const std::uint64_t valueBytes = task.rho.size() * sizeof(double);
    const std::uint64_t bytesPerSample =
        (pitch + classes - 1) * sizeof(double) + valueBytes + 2 * sizeof(double);
    const std::uint64_t fitting = (available / bytesPerSample + 3) / 4 * 4;
    std::uint64_t size = std::clamp(fitting, minBlockSize, maxBlockSize);
    size = std::clamp(maxValueBytes / valueBytes, minBlockSize, size);
    if (test.isSparse())
      size = std::clamp(std::min(available / 4, maxDenseBytes) / (test.cols() * sizeof(double)),
                        minBlockSize, size);
    return size;
  }

  void decide(const zelmag::AbstractMatrix<double>& test, std::uint64_t first, std::uint64_t count,
              double* values) override {
    requireBlas();
    products.resize(count * pitch);
    DenseRows rows(test);
    vectorProducts.multiply(rows.rows(first, count), test.cols(), products.data(), pitch, count);
    const std::uint64_t others = classes - 1;
    sums.resize(count * others);
    const Block block{test.rowNorms().data() + first, values, count};
    const double perVector =
        kernel.nanoseconds() + nanosecondsPerMultiplication * static_cast<double>(others);
    zel::forEachChunk(count, tileSamples, perVector * static_cast<double>(task.vectors->rows()),
                      [&](std::uint64_t begin, std::uint64_t end) {
                        double* const tile = sums.data() + begin * others;
                        for (std::uint64_t cls = 0; cls < classes; ++cls) {
                          addUp(block, cls, begin, end, tile);
                          share(block, cls, begin, end, tile);
                        }
                      });
  }

 private:
  struct Block {
    const double* testNorms;
    double* values;
    std::uint64_t samples;
  };

  // tile[c + j * (end - begin)] for samples begin + c and the class's coefficients j.
  void addUp(const Block& block, std::uint64_t cls, std::uint64_t begin, std::uint64_t end,
             double* tile) {
    const std::uint64_t others = classes - 1;
    const int rows = static_cast<int>(end - begin);
    const bool pair = others == 1;
    std::fill_n(tile, (end - begin) * others, 0.0);
    for (std::uint64_t v = task.classStarts[cls]; v < task.classStarts[cls + 1]; v += tileVectors) {
      const std::uint64_t count = std::min(tileVectors, task.classStarts[cls + 1] - v);
      for (std::uint64_t c = begin; c < end; ++c)
        kernel.transform(products.data() + c * pitch + v, task.vectors->rowNorms().data() + v,
                         count, block.testNorms[c]);
      denseProduct({!pair, rows, static_cast<int>(others), static_cast<int>(count),
                    products.data() + begin * pitch + v, static_cast<int>(pitch),
                    task.coefficients.data() + v * others, static_cast<int>(pair ? count : others),
                    1.0, tile, rows});
    }
  }

  // The first of a pair's classes starts its sum, the second ends it.
  void share(const Block& block, std::uint64_t cls, std::uint64_t begin, std::uint64_t end,
             const double* tile) const {
    for (std::uint64_t j = 0; j + 1 < classes; ++j, tile += end - begin) {
      const bool first = cls <= j;
      const std::uint64_t f = first ? pairIndex(cls, j + 1, classes) : pairIndex(j, cls, classes);
      double* const target = block.values + f * block.samples + begin;
      for (std::uint64_t c = 0; c < end - begin; ++c)
        target[c] = first ? tile[c] : target[c] + tile[c] - task.rho[f];
    }
  }

  DecisionTask task;
  HostKernel kernel;
  BlockProducts vectorProducts;
  std::uint64_t pitch;
  std::uint64_t classes;
  HostVector<double> products;
  HostVector<double> sums;
};

}  // namespace

std::unique_ptr<PredictorMachine> makeHostPredictor(const DecisionTask& task) {
  return std::make_unique<HostPredictor>(task);
}

}  // namespace zelsvm
