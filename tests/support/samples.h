// Small data sets for tests and the kernel functions as plain loops.
#pragma once

#include <cmath>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "data/matrix.h"
#include "data/svm_data.h"
#include "parameters/svm_context.h"

namespace zeltest {

// Dense rows with a label or target each.
struct Samples {
  std::uint64_t cols;
  std::vector<double> values;
  std::vector<double> labels;
  std::vector<double> weights = {};  // empty: all are 1
  std::vector<double> start = {};    // dual coefficients; empty: the usual start

  [[nodiscard]] std::uint64_t rows() const { return labels.size(); }
  [[nodiscard]] const double* row(std::uint64_t i) const { return values.data() + i * cols; }
  // The samples with these row numbers, in this order.
  [[nodiscard]] Samples selection(const std::vector<std::uint64_t>& numbers) const {
    Samples chosen{cols, {}, {}};
    for (const std::uint64_t i : numbers) {
      chosen.values.insert(chosen.values.end(), row(i), row(i) + cols);
      chosen.labels.push_back(labels[i]);
      if (!weights.empty()) chosen.weights.push_back(weights[i]);
    }
    return chosen;
  }
};

// The values that are not 0, as compressed sparse rows.
struct CsrArrays {
  std::vector<double> values{};
  std::vector<int> columns{};
  std::vector<int> offsets{0};
};

inline CsrArrays compressed(const Samples& samples) {
  CsrArrays csr;
  for (std::uint64_t i = 0; i < samples.rows(); ++i) {
    for (std::uint64_t k = 0; k < samples.cols; ++k) {
      if (samples.row(i)[k] == 0) continue;
      csr.values.push_back(samples.row(i)[k]);
      csr.columns.push_back(static_cast<int>(k));
    }
    csr.offsets.push_back(static_cast<int>(csr.values.size()));
  }
  return csr;
}

// Values in [-1, 1], a third of them 0, around a centre of each class's own; the classes, numbered
// as given, take turns and overlap.
inline Samples classSamples(std::uint64_t rows, std::uint64_t cols,
                            const std::vector<double>& classes, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  Samples samples{cols, {}, {}};
  for (std::uint64_t i = 0; i < rows; ++i) {
    const std::uint64_t c = i % classes.size();
    samples.labels.push_back(classes[c]);
    for (std::uint64_t k = 0; k < cols; ++k) {
      const double centre = k % classes.size() == c ? 0.5 : 0;
      const double value = uniform(generator) + centre;
      samples.values.push_back(generator() % 3 == 0 ? 0 : value);
    }
  }
  return samples;
}

// The same features with a noisy function of them as target.
inline Samples targetSamples(std::uint64_t rows, std::uint64_t cols, unsigned seed) {
  Samples samples = classSamples(rows, cols, {0}, seed);
  std::mt19937 generator(seed + 1);
  std::uniform_real_distribution<double> noise(-0.3, 0.3);
  for (std::uint64_t i = 0; i < rows; ++i)
    samples.labels[i] = std::sin(2 * samples.row(i)[0]) + samples.row(i)[1] + noise(generator);
  return samples;
}

// As parameters take them.
inline constexpr int allTypes[] = {zelsvm::SVM_TYPE_C_CLASSIFICATION,
                                   zelsvm::SVM_TYPE_NU_CLASSIFICATION, zelsvm::SVM_TYPE_ONE_CLASS,
                                   zelsvm::SVM_TYPE_EPSILON_REGRESSION,
                                   zelsvm::SVM_TYPE_NU_REGRESSION};
inline constexpr int allKernels[] = {zelsvm::SVM_KERNEL_LINEAR, zelsvm::SVM_KERNEL_POLYNOMIAL,
                                     zelsvm::SVM_KERNEL_RADIAL, zelsvm::SVM_KERNEL_SIGMOID};

inline bool isRegression(int svmType) {
  return svmType == int{zelsvm::SVM_TYPE_EPSILON_REGRESSION} ||
         svmType == int{zelsvm::SVM_TYPE_NU_REGRESSION};
}
inline bool isNu(int svmType) {
  return svmType == int{zelsvm::SVM_TYPE_NU_CLASSIFICATION} ||
         svmType == int{zelsvm::SVM_TYPE_NU_REGRESSION};
}

// What the formulation trains on: two labels or targets.
inline Samples samplesFor(int svmType, std::uint64_t rows, std::uint64_t cols, unsigned seed) {
  return isRegression(svmType) ? targetSamples(rows, cols, seed)
                               : classSamples(rows, cols, {-1, 1}, seed);
}

inline double product(const double* u, const double* v, std::uint64_t cols) {
  double sum = 0;
  for (std::uint64_t k = 0; k < cols; ++k) sum += u[k] * v[k];
  return sum;
}

inline double kernelValue(const zelsvm::KernelSettings& kernel, const double* u, const double* v,
                          std::uint64_t cols) {
  const double inner = kernel.gamma * product(u, v, cols) + kernel.coef0;
  double distance = 0;
  for (std::uint64_t k = 0; k < cols; ++k) distance += (u[k] - v[k]) * (u[k] - v[k]);
  switch (kernel.type) {
    case zelsvm::SVM_KERNEL_POLYNOMIAL:
      return std::pow(inner, std::trunc(kernel.degree));
    case zelsvm::SVM_KERNEL_RADIAL:
      return std::exp(-kernel.gamma * distance);
    case zelsvm::SVM_KERNEL_SIGMOID:
      return std::tanh(inner);
    default:
      return product(u, v, cols);
  }
}

inline double kernelValue(const zelsvm::SvmContext<double>& context, const double* u,
                          const double* v, std::uint64_t cols) {
  const double gamma = context.gamma == 0 ? 1 / static_cast<double>(cols) : context.gamma;
  return kernelValue({context.kernelType, gamma, context.coef0, context.degree}, u, v, cols);
}

// The samples as the context asks for them, sparse or dense.
class DataSet {
 public:
  DataSet(const Samples& samples, const zelsvm::SvmContext<double>& context)
      : content(context.sparse ? compressed(samples) : CsrArrays{samples.values, {}, {}}),
        labels(samples.labels) {
    matrix = zelmag::createMatrix<double>(content.values.data(), content.columns.data(),
                                          context.sparse ? content.offsets.data() : nullptr,
                                          samples.cols, samples.rows());
    zelsvm::HostVector<double> labelView(labels.size(), labels.data());
    view = std::make_unique<zelsvm::UserData<double>>(*matrix, labelView);
    view->setWeights(samples.weights);
    view->setStart(samples.start);
  }

  [[nodiscard]] zelsvm::UserData<double>& data() { return *view; }

 private:
  CsrArrays content;
  std::vector<double> labels;
  std::unique_ptr<zelmag::AbstractMatrix<double>> matrix;
  std::unique_ptr<zelsvm::UserData<double>> view;
};

}  // namespace zeltest
