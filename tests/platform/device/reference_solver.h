// A solve's state worked out from nothing after each step, to compare a machine with.
#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "platform/device/sample_rows.h"
#include "support/samples.h"

namespace zeltest {

struct SolverShape {
  std::size_t samples;
  int kernel;
  bool sparse = false;
  bool twoGroups = false;
  bool twice = false;     // two variables a sample
  bool fractions = true;  // else all is exact for the linear kernel
  bool fromZero = false;
  std::size_t cols = 5;
};

struct ReferenceSolver {
  explicit ReferenceSolver(const SolverShape& shape, unsigned seed)
      : shape(shape),
        kernel(kernelSettings(shape.kernel)),
        rows(sampleRows(shape.samples, shape.cols, shape.fractions, seed)),
        matrix(rows, shape.sparse) {
    std::mt19937 generator(seed + 1);
    std::uniform_real_distribution<double> uniform(0, 1);
    const std::size_t l = shape.twice ? 2 * shape.samples : shape.samples;
    for (std::size_t s = 0; shape.fractions && s < shape.samples; ++s)
      factors.push_back(0.5 + static_cast<double>(s % 3));
    for (std::size_t t = 0; t < l; ++t) {
      const bool positive = shape.twice ? t < shape.samples : generator() % 2 == 0;
      signs.push_back(positive ? 1 : -1);
      const double u = uniform(generator);
      const double free = shape.fractions ? uniform(generator) : 0.5;
      start.push_back(shape.fromZero || u < 0.3 ? 0 : (u < 0.6 ? 1 : free) * bound(t));
      linearTerm.push_back(shape.fractions ? uniform(generator) - 0.5 : std::floor(4 * u) - 2);
      active.push_back(static_cast<unsigned>(t));
    }
    alpha = start;
    matrixOfKernel.assign(shape.samples, std::vector<double>(shape.samples));
    for (std::size_t a = 0; a < shape.samples; ++a)
      for (std::size_t b = 0; b < shape.samples; ++b)
        matrixOfKernel[a][b] = kernelValue(kernel, rows[a].data(), rows[b].data(), shape.cols);
    updateGradient();
  }

  [[nodiscard]] zelsvm::SolverTask task() const {
    return {.samples = &matrix.get(),
            .kernel = kernel,
            .signs = signs,
            .start = start,
            .startsAtZero = shape.fromZero,
            .linearTerm = linearTerm,
            .Cp = Cp,
            .Cn = Cn,
            .cacheMegabytes = 0,
            .factors = factors};
  }
  [[nodiscard]] std::size_t count() const { return signs.size(); }
  [[nodiscard]] bool isPositive(std::size_t t) const { return signs[t] > 0; }
  [[nodiscard]] double bound(std::size_t t) const {
    return (isPositive(t) ? Cp : Cn) * (factors.empty() ? 1 : factors[t % shape.samples]);
  }
  [[nodiscard]] double kernelOf(std::size_t a, std::size_t b) const {
    return matrixOfKernel[a % shape.samples][b % shape.samples];
  }
  [[nodiscard]] double violation(std::size_t t) const { return -signs[t] * gradient[t]; }
  // May the multiplier grow in the direction of its sign; may it shrink?
  [[nodiscard]] bool isUpper(std::size_t t) const {
    return isPositive(t) ? alpha[t] < bound(t) : alpha[t] > 0;
  }
  [[nodiscard]] bool isLower(std::size_t t) const {
    return isPositive(t) ? alpha[t] > 0 : alpha[t] < bound(t);
  }
  [[nodiscard]] bool isInGroup(std::size_t t, int group) const {
    return !shape.twoGroups || isPositive(t) == (group == 0);
  }

  void updateGradient() {
    gradient = linearTerm;
    for (std::size_t s = 0; s < count(); ++s)
      if (alpha[s] != 0)
        for (std::size_t t = 0; t < count(); ++t)
          gradient[t] += signs[s] * signs[t] * kernelOf(s, t) * alpha[s];
  }

  struct Extremes {
    double up = -std::numeric_limits<double>::infinity();
    double low = std::numeric_limits<double>::infinity();
  };
  [[nodiscard]] Extremes extremes(int group) const {
    Extremes found;
    for (const unsigned t : active) {
      if (!isInGroup(t, group)) continue;
      if (isUpper(t)) found.up = std::max(found.up, violation(t));
      if (isLower(t)) found.low = std::min(found.low, violation(t));
    }
    return found;
  }

  // What the pair promises; infinite for one that is no candidate.
  [[nodiscard]] double gain(std::size_t i, double up, std::size_t j) const {
    const double b = up - violation(j);
    if (!isLower(j) || !(b > 0)) return std::numeric_limits<double>::infinity();
    const double curvature = kernelOf(i, i) + kernelOf(j, j) - 2 * kernelOf(i, j);
    return -b * b / (curvature > 0 ? curvature : 1e-12);
  }

  [[nodiscard]] double unboundedStep(std::size_t i, std::size_t j) const {
    const double curvature = kernelOf(i, i) + kernelOf(j, j) - 2 * kernelOf(i, j);
    return (violation(i) - violation(j)) / (curvature > 0 ? curvature : 1e-12);
  }
  // What the pair's best step within the bounds adds to the two multipliers.
  [[nodiscard]] std::pair<double, double> pairStep(std::size_t i, std::size_t j) const {
    const double most = std::min(room(i, signs[i]), room(j, -signs[j]));
    const double step = std::clamp(unboundedStep(i, j), 0.0, most);
    return {signs[i] * step, -signs[j] * step};
  }

  SolverShape shape;
  zelsvm::KernelSettings kernel;
  Rows rows;
  SampleMatrix matrix;
  double Cp = 1.5;
  double Cn = 0.75;
  std::vector<double> factors;
  std::vector<signed char> signs;
  std::vector<double> start;
  std::vector<double> linearTerm;
  std::vector<double> alpha;
  std::vector<double> gradient;
  std::vector<unsigned> active;
  Rows matrixOfKernel;

 private:
  [[nodiscard]] double room(std::size_t t, int direction) const {
    return direction > 0 ? bound(t) - alpha[t] : alpha[t];
  }
};

}  // namespace zeltest
