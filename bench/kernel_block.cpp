// Speed of blocks of kernel values, the radial function included, beside the product alone by the
// BLAS: kernel_block [threads]
#include "platform/host/block/kernel_block.h"

#include <cblas.h>
#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

#include "data/matrix.h"
#include "threads/parallel.h"

extern "C" void openblas_set_num_threads(int);

namespace {

using zelsvm::HostVector;

constexpr int repetitions = 15;

double bestSeconds(const std::function<void()>& work) {
  double best = 1e9;
  for (int k = 0; k < repetitions; ++k) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    best = std::min(best, taken.count());
  }
  return best;
}

struct Shape {
  std::uint64_t samples;
  std::uint64_t features;
};

class ShapeBench {
 public:
  explicit ShapeBench(const Shape& shape) : shape(shape), values(shape.samples * shape.features) {
    std::mt19937 generator(1);
    std::uniform_real_distribution<double> uniform(-1, 1);
    for (double& value : values) value = uniform(generator);
    matrix = zelmag::createMatrix<double>(values.data(), nullptr, nullptr, shape.features,
                                          shape.samples);
    const auto gamma = 1 / static_cast<double>(shape.features);
    block.assign(zelsvm::SampleChoice(*matrix), {zelsvm::SVM_KERNEL_RADIAL, gamma, 0, 0});
  }

  void run(std::uint64_t batch) {
    const std::uint64_t pitch = zelsvm::blockPitch<double>(shape.samples);
    HostVector<double> stored(batch * pitch);
    HostVector<double> sum(pitch);
    stored.fill(0);
    sum.fill(0);
    std::vector<double*> rows(batch);
    for (std::uint64_t r = 0; r < batch; ++r) rows[r] = stored.at(r * pitch);
    const std::vector<double> weights(batch, 1e-3);
    double* const sums[] = {sum.data()};
    const zelsvm::SampleChoice chosen(*matrix, shape.samples / 3, batch);
    const double storing = bestSeconds([&] { block.compute(chosen, {rows, {}, {}}); });
    const double adding = bestSeconds([&] { block.compute(chosen, {{}, weights, sums}); });
    const double both = bestSeconds([&] { block.compute(chosen, {rows, weights, sums}); });
    const double product = bestSeconds([&] { multiply(batch, stored.data()); });
    const double flops = 2e-9 * static_cast<double>(batch * shape.samples * shape.features);
    std::printf("%6llu x %-4llu %3llu rows: stored %6.1f, added %6.1f, both %6.1f; product %6.1f\n",
                static_cast<unsigned long long>(shape.samples),
                static_cast<unsigned long long>(shape.features),
                static_cast<unsigned long long>(batch), flops / storing, flops / adding,
                flops / both, flops / product);
  }

 private:
  void multiply(std::uint64_t batch, double* result) const {
    const auto n = static_cast<int>(shape.samples);
    const auto d = static_cast<int>(shape.features);
    const double* const rows = values.data() + shape.samples / 3 * shape.features;
    cblas_dgemm(CblasRowMajor, CblasNoTrans, CblasTrans, static_cast<int>(batch), n, d, 1, rows, d,
                values.data(), d, 0, result, n);
  }

  Shape shape;
  std::vector<double> values;
  std::unique_ptr<zelmag::AbstractMatrix<double>> matrix;
  zelsvm::KernelBlock<double> block;
};

}  // namespace

int main(int count, char** arguments) {
  const int most = count > 1 ? std::atoi(arguments[1]) : zel::threadCount();
  for (const Shape& shape : {Shape{5000, 100}, {20000, 100}, {50000, 50}, {10000, 784}}) {
    ShapeBench bench(shape);
    for (int threads = 1; threads <= most; threads *= 2) {
      omp_set_num_threads(threads);
      openblas_set_num_threads(threads);
      std::printf("GFLOP/s, threads: %d\n", threads);
      for (const std::uint64_t batch : {1, 8, 32, 256}) bench.run(batch);
    }
  }
}
