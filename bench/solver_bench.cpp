// What an iteration of the solver costs outside kernel rows, and how fast kernel rows are against
// copying memory: 5,000 samples x 100 features, dense, radial kernel, one thread.
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/zelsvm/data/dense_matrix.h"
#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/engine/smo_core_solver.h"

namespace {

using zelsvm::HostVector;

constexpr std::uint64_t samples = 5000;
constexpr std::uint64_t features = 100;
constexpr int timedRuns = 5;

// Processor time of this thread, so that other processes disturb little.
double threadSeconds() {
  timespec now{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

double secondsOf(const std::function<void()>& work) {
  const double start = threadSeconds();
  work();
  return threadSeconds() - start;
}

double medianOf(const std::function<double()>& measure) {
  measure();
  std::vector<double> figures(timedRuns);
  for (double& figure : figures) figure = measure();
  std::sort(figures.begin(), figures.end());
  return figures[timedRuns / 2];
}

// Tells how many rows were computed.
class CountingSolver : public zelsvm::SmoCoreSolver<double> {
 public:
  using SmoCoreSolver::SmoCoreSolver;
  [[nodiscard]] std::uint64_t rowsComputed() const { return kernel.computedRows(); }
};

struct Problem {
  HostVector<double> values{samples * features};
  HostVector<double> labels{samples};

  // Two overlapping classes.
  Problem() {
    std::mt19937_64 random(1);
    std::normal_distribution<double> noise(0, 0.4);
    for (std::uint64_t i = 0; i < samples; ++i) {
      labels.set(i, i % 2 == 0 ? 1 : -1);
      for (std::uint64_t j = 0; j < features; ++j)
        values.set(i * features + j, noise(random) + 0.03 * labels[i]);
    }
  }
  zelmag::DenseMatrix<double> matrix(zellas::BlasContext& context) {
    return {HostVector<double>(values.size(), values.data()), features, samples, context};
  }
};

double copyBandwidth() {
  std::vector<char> from(std::size_t{256} << 20, 1);
  std::vector<char> to(from.size());
  const double seconds = medianOf(
      [&] { return secondsOf([&] { std::memcpy(to.data(), from.data(), from.size()); }); });
  return 2 * static_cast<double>(from.size()) / seconds;
}

// Every row once, through the kernel object, from an empty cache.
double rowSeconds(Problem& problem, const zelsvm::SvmContext<double>& context,
                  zellas::BlasContext& blas) {
  zelmag::DenseMatrix<double> matrix = problem.matrix(blas);
  zelsvm::SmoKernel<double> kernel;
  double checksum = 0;
  const auto allRows = [&] {
    kernel.initialize(matrix, context.kernelType, samples, context.cacheSize);
    return secondsOf([&] {
      for (std::uint64_t i = 0; i < samples; ++i) checksum += kernel.getRow(i)[i];
    });
  };
  const double seconds = medianOf(allRows) / static_cast<double>(samples);
  // The radial kernel of a sample with itself is 1.
  if (!(std::abs(checksum / ((timedRuns + 1) * double{samples}) - 1) < 1e-9)) {
    std::fprintf(stderr, "the kernel rows are wrong\n");
    std::exit(1);
  }
  return seconds;
}

struct SolveFigures {
  double seconds;
  double iterations;
  double rows;
};

struct GatheringSink : zel::MessageSink {
  GatheringSink() : MessageSink(false) {}
  void write(std::string_view message) override { text += message; }
  std::string text;
};

// The iteration count stands in what the solver prints.
SolveFigures solveOnce(Problem& problem, const zelsvm::SvmContext<double>& context,
                       zellas::BlasContext& blas) {
  zelmag::DenseMatrix<double> matrix = problem.matrix(blas);
  zelsvm::UserData<double> data(matrix, problem.labels);
  CountingSolver solver(context);
  solver.gradientReady = true;
  HostVector<double> alpha(samples);
  HostVector<double> p(samples);
  HostVector<char2> status(samples);
  alpha.fill(0);
  p.fill(-1);
  for (std::uint64_t i = 0; i < samples; ++i)
    status.set(i, {0, static_cast<signed char>(problem.labels[i])});
  zelsvm::SmoSolution solution;
  GatheringSink log;
  const zel::SinkScope scope(log);
  const double seconds = secondsOf([&] { solver.solve(solution, data, alpha, status, p); });
  const std::string finished = "Finished optimization in ";
  const std::size_t found = log.text.find(finished);
  if (found == std::string::npos || !(solution.obj < 0)) {
    std::fprintf(stderr, "the problem was not solved\n");
    std::exit(1);
  }
  return {seconds, std::atof(log.text.c_str() + found + finished.size()),
          static_cast<double>(solver.rowsComputed())};
}

}  // namespace

int main() {
  omp_set_num_threads(1);
  zelsvm::SvmParameters parameters;
  parameters.C = 10;
  parameters.gamma = 0.05;
  parameters.cacheSize = 1000;
  parameters.sparse = false;
  const zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training);
  zellas::BlasContext blas;
  blas.create();
  Problem problem;

  const double bandwidth = copyBandwidth();
  const double row = rowSeconds(problem, context, blas);
  SolveFigures solve{};
  const double outside = medianOf([&] {
    solve = solveOnce(problem, context, blas);
    return (solve.seconds - solve.rows * row) / solve.iterations;
  });
  const double rowBandwidth = samples * features * sizeof(double) / row;
  std::printf(
      "{\"bench\":\"solver\",\"samples\":%lu,\"features\":%lu,\"threads\":1,\"iterations\":%.0f,"
      "\"rows\":%.0f,\"solve_s\":%.4f,\"row_us\":%.1f,\"iteration_outside_rows_us\":%.2f,"
      "\"row_GBps\":%.2f,\"copy_GBps\":%.2f,\"row_per_copy\":%.2f}\n",
      samples, features, solve.iterations, solve.rows, solve.seconds, row * 1e6, outside * 1e6,
      rowBandwidth / 1e9, bandwidth / 1e9, rowBandwidth / bandwidth);
}
