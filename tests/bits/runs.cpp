#include "bits/runs.h"

#include <cmath>
#include <random>

#include "rules/kernel_names.h"

namespace zeltest {
namespace {

using zelsvm::SvmParameters;

enum class Values { full, sparse, whole };

// The inputs, too, must be the same bits everywhere: products and sums alone make the targets, as
// functions of the C library differ.
Samples bitSamples(int svmType, std::uint64_t rows, std::uint64_t cols,
                   const std::vector<double>& labels, Values kind, unsigned seed) {
  Samples samples = classSamples(rows, cols, labels, seed);
  std::mt19937 generator(seed);
  for (double& value : samples.values) {
    if (kind == Values::sparse && generator() % 12 != 0) value = 0;
    if (kind == Values::whole) value = std::floor(8 * value);
  }
  if (!isRegression(svmType)) return samples;
  for (std::uint64_t i = 0; i < rows; ++i) {
    const double* const row = samples.row(i);
    samples.labels[i] = row[0] * row[cols / 2] + 0.25 * row[cols - 1];
  }
  return samples;
}

struct Shape {
  std::uint64_t rows;
  std::uint64_t cols;
  std::vector<double> labels{-1, 1};
  Values kind = Values::full;
};

std::string nameOf(const SvmParameters& parameters, const Shape& shape) {
  const char* const kinds[] = {"", "-sparse", "-whole"};
  return std::string(zelsvm::nameOf(static_cast<zelsvm::SVM_TYPE>(parameters.svmType))) + "/" +
         zelsvm::nameOf(static_cast<zelsvm::SVM_KERNEL>(parameters.kernelType)) + "/" +
         std::to_string(shape.rows) + "x" + std::to_string(shape.cols) +
         kinds[static_cast<int>(shape.kind)];
}

BitRun training(const Shape& shape, const SvmParameters& parameters) {
  const auto samples = [&](std::uint64_t rows, unsigned seed) {
    return bitSamples(parameters.svmType, rows, shape.cols, shape.labels, shape.kind, seed);
  };
  return {.name = nameOf(parameters, shape),
          .samples = samples(shape.rows, 1),
          .test = samples(shape.rows / 4 + 3, 2),
          .parameters = parameters};
}

BitRun withProbability(BitRun run) {
  run.name += "/probability";
  run.probability = true;
  return run;
}

BitRun withFolds(BitRun run, std::uint64_t folds) {
  run.name += "/folds";
  run.folds = folds;
  return run;
}

}  // namespace

std::vector<BitRun> shortRuns() {
  std::vector<BitRun> runs;
  for (const int type : allTypes) {
    for (const int kernel : allKernels)
      for (const Shape& shape : {Shape{23, 1}, Shape{24, 7}, Shape{25, 24}, Shape{100, 100}})
        runs.push_back(training(shape, {.svmType = type, .kernelType = kernel, .coef0 = 0.1}));
    const SvmParameters radial{.svmType = type, .C = 10};
    runs.push_back(withFolds(training({200, 24}, radial), 5));
    if (type != int{zelsvm::SVM_TYPE_ONE_CLASS})
      runs.push_back(withProbability(training({200, 24}, radial)));
  }
  const Shape labels{300, 24, {1, 2, 3, 4, 5}};
  runs.push_back(training(labels, {.C = 10}));
  runs.push_back(withProbability(training(labels, {.kernelType = zelsvm::SVM_KERNEL_LINEAR})));
  runs.push_back(withFolds(withProbability(training(labels, {})), 3));
  runs.push_back(training({1050, 24}, {.svmType = zelsvm::SVM_TYPE_EPSILON_REGRESSION}));
  return runs;
}

std::vector<BitRun> longRuns() {
  std::vector<BitRun> runs;
  for (const int type : allTypes) {
    const SvmParameters radial{.svmType = type, .C = 10};
    const SvmParameters polynomial{
        .svmType = type, .kernelType = zelsvm::SVM_KERNEL_POLYNOMIAL, .coef0 = 1};
    runs.push_back(training({1100, 24}, radial));
    runs.push_back(training({2100, 7}, polynomial));
    runs.push_back(training({2100, 100}, radial));
    runs.push_back(training({1100, 200, {-1, 1}, Values::sparse}, radial));
    runs.push_back(training({2100, 200, {-1, 1}, Values::sparse}, radial));
    runs.push_back(training({1100, 25, {-1, 1}, Values::whole}, radial));
  }
  return runs;
}

}  // namespace zeltest
