// The device's own limits and how near to them the engine comes: kernel rows of 20,000 x 784 dense
// samples, an iteration over 20,000 variables, predictions with 10,000 support vectors x 784.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <span>
#include <vector>

#include "data/matrix.h"
#include "platform/cuda/linear_algebra/linear_algebra.h"
#include "platform/cuda/machine/cuda_machine.h"
#include "platform/cuda/runtime/device.h"
#include "platform/cuda/runtime/device_vector.h"
#include "platform/machine.h"

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
                                                         std::uint64_t cols) {
  return zelmag::createMatrix<double>(values.data(), nullptr, nullptr, cols, values.size() / cols);
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
  const HostVector<double> values = randomValues(n * n, 1);
  zel::DeviceVector<double> a(std::span(values.data(), n * n));
  zel::DeviceVector<double> c(n * n);
  zellas::DenseMatrix<double> matrix(blas, a.data(), n, n, n);
  return 2.0 * n * n * n / medianSeconds([&] {
           matrix.gemm(CUBLAS_OP_T, CUBLAS_OP_N, n, 1, a.data(), n, 0, c.data(), n);
         });
}

constexpr zelsvm::KernelSettings radial = {zelsvm::SVM_KERNEL_RADIAL, 1e-3, 0, 3};

// A two-class problem of random samples that does not end soon.
class Iterations {
 public:
  Iterations(const zelsvm::Machine& machine, std::uint64_t rows, std::uint64_t cols,
             std::uint64_t cacheMegabytes)
      : values(randomValues(rows * cols, 3)),
        matrix(matrixOf(values, cols)),
        signs(rows),
        start(rows, 0.0),
        linearTerm(rows, -1.0),
        solver(machine.makeSolver(radial.type, false)) {
    for (std::uint64_t i = 0; i < rows; ++i) signs[i] = i % 2 == 0 ? 1 : -1;
    solver->begin({.samples = matrix.get(),
                   .kernel = radial,
                   .signs = signs,
                   .start = start,
                   .startsAtZero = true,
                   .linearTerm = linearTerm,
                   .Cp = 1e6,
                   .Cn = 1e6,
                   .cacheMegabytes = cacheMegabytes},
                  [] {});
  }

  double seconds(std::uint64_t count) {
    return secondsOf([&] {
      for (std::uint64_t k = 0; k < count; ++k) {
        zelsvm::SmoSelection<double> selection{};
        zelsvm::SmoSelection<double> second{};
        solver->select(selection, second);
        solver->movePair(selection, second);
        solver->updateGradient();
      }
    });
  }

 private:
  HostVector<double> values;
  std::unique_ptr<zelmag::AbstractMatrix<double>> matrix;
  std::vector<signed char> signs;
  std::vector<double> start;
  std::vector<double> linearTerm;
  std::unique_ptr<zelsvm::SolverMachine> solver;
};

// Two rows an iteration while the cache is cold.
void timeRows(const zelsvm::Machine& machine, double bandwidth) {
  constexpr std::uint64_t rows = 20000;
  constexpr std::uint64_t cols = 784;
  Iterations iterations(machine, rows, cols, 0);
  iterations.seconds(10);
  const double seconds = iterations.seconds(200) / 400;
  const double rate = rows * cols * sizeof(double) / seconds;
  std::printf("kernel row, 20,000 x 784 dense: %.1f us, %.0f GB/s of samples, %.0f %% of copying\n",
              seconds * 1e6, rate / 1e9, 100 * rate / bandwidth);
}

void timeIterations(const zelsvm::Machine& machine) {
  Iterations iterations(machine, 20000, 20, 4095);
  const double first = iterations.seconds(60000);
  const double behind = iterations.seconds(40000);
  std::printf("iteration, 20,000 variables: %.1f us behind the first 60,000, %.1f us among them\n",
              behind / 40000 * 1e6, first / 60000 * 1e6);
}

// Seconds of a working set's steps and of rows of all samples, on a problem of two classes.
class SetTimes {
 public:
  SetTimes(const zelsvm::Machine& machine, std::uint64_t rows, std::uint64_t cols)
      : values(randomValues(rows * cols, 7)),
        matrix(matrixOf(values, cols)),
        sets(machine.makeSetMachine()) {
    sets->begin({.samples = matrix.get(), .kernel = radial, .cacheMegabytes = 100});
  }

  double secondsOfRows(unsigned count) {
    std::vector<zelsvm::WeightedRow> rows;
    for (unsigned s = 0; s < count; ++s) rows.push_back({s, false, 1});
    std::vector<double> sums(matrix->rows());
    return medianSeconds([&] { sets->addRows(rows, sums); });
  }

  double secondsOfSteps(std::uint64_t samples, std::uint64_t steps) {
    std::vector<unsigned> chosen(samples);
    std::iota(chosen.begin(), chosen.end(), 0);
    sets->chooseSet(chosen, zelsvm::SetPrecision::single);
    std::vector<signed char> signs(samples);
    for (std::uint64_t s = 0; s < samples; ++s) signs[s] = s % 2 == 0 ? 1 : -1;
    const std::vector<double> linearTerm(samples, -1.0);
    return medianSeconds([&] {
      std::vector<double> multipliers(samples);
      std::vector<double> sums(samples);
      const auto made = sets->solveSet({.samples = samples,
                                        .signs = signs,
                                        .linearTerm = linearTerm,
                                        .multipliers = multipliers,
                                        .Cp = 1e6,
                                        .Cn = 1e6,
                                        .twoGroups = false},
                                       sums, 1e-12, steps);
      if (made.count != steps) std::printf("the set ended after %lu steps\n", made.count);
    });
  }

 private:
  HostVector<double> values;
  std::unique_ptr<zelmag::AbstractMatrix<double>> matrix;
  std::unique_ptr<zelsvm::SetMachine> sets;
};

// What src/tools/platform_estimate.cpp assumes of a device, as this one has it.
void timeConstants(const zelsvm::Machine& machine, double secondsOfStart) {
  constexpr std::uint64_t rows = 50000;
  constexpr unsigned added = 4096;
  constexpr std::uint64_t few = 16;
  constexpr std::uint64_t many = 512;
  constexpr std::uint64_t steps = 2000;
  const double shortRows = SetTimes(machine, rows, few).secondsOfRows(added);
  const double longRows = SetTimes(machine, rows, many).secondsOfRows(added);
  const double perEntry = 1e9 / (static_cast<double>(rows) * added);
  const double value = (longRows - shortRows) * perEntry / (many - few);
  SetTimes sets(machine, 8192, 100);
  Iterations pairs(machine, 1400, 20, 4095);
  pairs.seconds(2000);
  std::printf(
      "src/tools/platform_estimate.cpp should have for this device:\n"
      "  deviceEntry = %.3g\n  deviceValue = %.3g\n  deviceSetStep = %.0f\n"
      "  devicePairStep = %.0f\n  deviceStart = %.2f\n",
      shortRows * perEntry - few * value, value, sets.secondsOfSteps(4096, steps) / steps * 1e9,
      pairs.seconds(2000) / 2000 * 1e9, secondsOfStart);
}

void timePrediction(const zelsvm::Machine& machine, double rate) {
  constexpr std::uint64_t rows = 10000;
  constexpr std::uint64_t cols = 784;
  HostVector<double> vectors = randomValues(rows * cols, 4);
  HostVector<double> samples = randomValues(rows * cols, 5);
  const auto model = matrixOf(vectors, cols);
  const auto test = matrixOf(samples, cols);
  const HostVector<double> coefficients = randomValues(rows, 6);
  const double rho = 0;
  const auto predictor = machine.makePredictor({.vectors = model.get(),
                                                .kernel = radial,
                                                .classStarts = {0, rows, rows},
                                                .coefficients = {coefficients.data(), rows},
                                                .rho = {&rho, 1}});
  const std::uint64_t block = predictor->blockSize(*test);
  std::vector<double> decisions(block);
  const double seconds = medianSeconds([&] {
    for (std::uint64_t first = 0; first < rows; first += block)
      predictor->decide(*test, first, std::min(block, rows - first), decisions.data());
  });
  const double reached = 2.0 * rows * rows * cols / seconds;
  std::printf("prediction, 10,000 samples, 10,000 vectors x 784: %.1f ms, %.0f %% of products\n",
              seconds * 1e3, 100 * reached / rate);
}

}  // namespace

int main() {
  const auto start = std::chrono::steady_clock::now();
  const zelsvm::CudaMachine machine(0);
  SetTimes(machine, 1024, 16).secondsOfRows(16);
  const std::chrono::duration<double> starting = std::chrono::steady_clock::now() - start;
  const double bandwidth = copyBandwidth();
  const double rate = matrixRate();
  std::printf("copying: %.0f GB/s; products in double precision: %.1f TFLOP/s\n", bandwidth / 1e9,
              rate / 1e12);
  timeRows(machine, bandwidth);
  timeIterations(machine);
  timePrediction(machine, rate);
  timeConstants(machine, starting.count());
}
