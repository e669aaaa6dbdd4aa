// The device's own limits and how near to them the engine comes: kernel rows of 20,000 x 784 dense
// samples, an iteration over 20,000 variables, predictions with 10,000 support vectors x 784.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/engine/smo_core_solver.h"
#include "zeldplus/zelsvm/model/rspredictor.h"

namespace {

using zelsvm::HostVector;

constexpr int timedRuns = 5;

double secondsOf(const std::function<void()>& work) {
  zel::zelSafeCall(cudaDeviceSynchronize());
  const auto start = std::chrono::steady_clock::now();
  work();
  zel::zelSafeCall(cudaDeviceSynchronize());
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double medianSeconds(const std::function<void()>& work) {
  work();
  std::vector<double> figures(timedRuns);
  for (double& figure : figures) figure = secondsOf(work);
  std::sort(figures.begin(), figures.end());
  return figures[timedRuns / 2];
}

HostVector<double> randomValues(std::uint64_t count, unsigned seed) {
  std::mt19937_64 random(seed);
  std::normal_distribution<double> noise(0, 1);
  HostVector<double> values(count);
  for (std::uint64_t i = 0; i < count; ++i) values.set(i, noise(random));
  return values;
}

std::unique_ptr<zelmag::AbstractMatrix<double>> matrixOf(HostVector<double>& values,
                                                         std::uint64_t cols,
                                                         zelsvm::SvmContext<double>& context) {
  return zelmag::createMatrix<double>(values.data(), nullptr, nullptr, cols, values.size() / cols,
                                      context.las());
}

// Bytes read and written a second by copies within the device.
double copyBandwidth() {
  constexpr std::uint64_t count = std::uint64_t{1} << 27;
  const zel::DeviceVector<double> from(count);
  zel::DeviceVector<double> to(count);
  return 2 * count * sizeof(double) / medianSeconds([&] { to.copyFrom(from, 0, 0, count); });
}

// Double-precision operations a second in products of the library.
double matrixRate() {
  constexpr std::uint64_t n = 8192;
  zellas::BlasContext blas;
  blas.create();
  zel::DeviceVector<double> a(randomValues(n * n, 1));
  const zel::DeviceVector<double> b(a.size());
  zel::DeviceVector<double> c(a.size());
  zellas::DenseMatrix<double> matrix(blas, a.data(), n, n, n);
  return 2.0 * n * n * n / medianSeconds([&] {
           matrix.gemm(CUBLAS_OP_T, CUBLAS_OP_N, n, 1, a.data(), n, 0, c.data(), n);
         });
}

void timeRows(double bandwidth) {
  constexpr std::uint64_t rows = 20000;
  constexpr std::uint64_t cols = 784;
  zelsvm::SvmContext<double> context({.sparse = false}, zelsvm::ParameterChecks::training);
  HostVector<double> values = randomValues(rows * cols, 2);
  const auto matrix = matrixOf(values, cols, context);
  zelsvm::SmoKernel<double> kernel;
  kernel.initialize(*matrix, zelsvm::SVM_KERNEL_RADIAL, rows, 0);
  std::uint64_t next = 0;
  const double seconds = medianSeconds([&] {
    for (int k = 0; k < 200; ++k) kernel.getRow(next++ % rows);
  });
  const double rate = 200 * rows * cols * sizeof(double) / seconds;
  std::printf("kernel row, 20,000 x 784 dense: %.1f us, %.0f GB/s of samples, %.0f %% of copying\n",
              seconds / 200 * 1e6, rate / 1e9, 100 * rate / bandwidth);
}

double solveSeconds(std::uint64_t iterations, zelmag::AbstractMatrix<double>& matrix,
                    HostVector<double>& labels) {
  zelsvm::SvmContext<double> context(
      {.C = 1e6, .eps = 1e-12, .maxIterations = iterations, .cacheSize = 4095, .shrinking = false},
      zelsvm::ParameterChecks::training);
  zelsvm::UserData<double> data(matrix, labels);
  const std::uint64_t n = labels.size();
  HostVector<double> alpha(n);
  HostVector<double> p(n);
  HostVector<char2> status(n);
  alpha.fill(0);
  p.fill(-1);
  for (std::uint64_t i = 0; i < n; ++i)
    status.set(i, char2{0, static_cast<signed char>(labels[i])});
  zelsvm::SmoCoreSolver<double> solver(context);
  solver.gradientReady = true;
  zelsvm::SmoSolution solution;
  return secondsOf([&] { solver.solve(solution, data, alpha, status, p); });
}

// Two runs of different length: their difference has most rows in the cache.
void timeIterations() {
  constexpr std::uint64_t rows = 20000;
  constexpr std::uint64_t cols = 20;
  zelsvm::SvmContext<double> context({.sparse = false}, zelsvm::ParameterChecks::training);
  HostVector<double> values = randomValues(rows * cols, 3);
  HostVector<double> labels(rows);
  for (std::uint64_t i = 0; i < rows; ++i) labels.set(i, i % 2 == 0 ? 1 : -1);
  const auto matrix = matrixOf(values, cols, context);
  const double first = solveSeconds(60000, *matrix, labels);
  const double longer = solveSeconds(100000, *matrix, labels);
  std::printf("iteration, 20,000 variables: %.1f us behind the first 60,000, %.1f us among them\n",
              (longer - first) / 40000 * 1e6, first / 60000 * 1e6);
}

void timePrediction(double rate) {
  constexpr std::uint64_t rows = 10000;
  constexpr std::uint64_t cols = 784;
  zelsvm::SvmContext<double> context({.svmType = 3, .gamma = 1e-3, .sparse = false},
                                     zelsvm::ParameterChecks::model);
  HostVector<double> vectors = randomValues(rows * cols, 4);
  HostVector<double> samples = randomValues(rows * cols, 5);
  const auto test = matrixOf(samples, cols, context);
  HostVector<double> rho(1);
  rho.fill(0);
  zelsvm::GenericModel<double> model;
  model.setVectors(matrixOf(vectors, cols, context));
  model.setCoefficients(randomValues(rows, 6));
  model.setRho(std::move(rho));
  zelsvm::GenericPredictor<double> predictor(context, model);
  HostVector<double> output(rows);
  const double seconds = medianSeconds([&] { predictor.predict(output, *test); });
  const double reached = 2.0 * rows * rows * cols / seconds;
  std::printf("prediction, 10,000 samples, 10,000 vectors x 784: %.1f ms, %.0f %% of products\n",
              seconds * 1e3, 100 * reached / rate);
}

}  // namespace

int main() {
  zel::ConsoleSink console(false);
  const zel::SinkScope scope(console);
  const double bandwidth = copyBandwidth();
  const double rate = matrixRate();
  std::printf("copying: %.0f GB/s; products in double precision: %.1f TFLOP/s\n", bandwidth / 1e9,
              rate / 1e12);
  timeRows(bandwidth);
  timeIterations();
  timePrediction(rate);
}
