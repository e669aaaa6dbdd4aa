// What a model tells of itself, against the samples that it was trained on and slow sums.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "support/library_samples.h"
#include "support/programs/tool_runs.h"

namespace {

using zelsvm::Formulation;
using zelsvm::Model;
using zelsvm::Parameters;
using zeltest::dense;
using zeltest::expectNear;
using zeltest::Samples;
using zeltest::sparse;

Samples classes() { return zeltest::classSamples(90, 4, {2, -1, 5}, 1); }

constexpr Formulation allFormulations[] = {
    Formulation::cClassification, Formulation::nuClassification, Formulation::oneClass,
    Formulation::epsilonRegression, Formulation::nuRegression};

Samples samplesFor(Formulation formulation) {
  return formulation >= Formulation::epsilonRegression ? zeltest::targetSamples(70, 3, 2)
                                                       : classes();
}

// Each feature from its training range to the interval.
Samples scaled(Samples samples, const zelsvm::Interval& interval) {
  if (interval.lower == interval.upper) return samples;
  for (std::uint64_t j = 0; j < samples.cols; ++j) {
    double least = samples.values[j];
    double most = least;
    for (std::uint64_t i = 0; i < samples.rows(); ++i) {
      least = std::min(least, samples.row(i)[j]);
      most = std::max(most, samples.row(i)[j]);
    }
    for (std::uint64_t i = 0; i < samples.rows(); ++i) {
      double& value = samples.values[i * samples.cols + j];
      value = (value - least) / (most - least) * (interval.upper - interval.lower) + interval.lower;
    }
  }
  return samples;
}

double radial(const Samples& samples, std::uint64_t a, std::uint64_t b, double gamma) {
  double distance = 0;
  for (std::uint64_t k = 0; k < samples.cols; ++k)
    distance += std::pow(samples.row(a)[k] - samples.row(b)[k], 2);
  return std::exp(-gamma * distance);
}

// Sample by sample, from what the model tells.
std::vector<double> decisionsOf(const Model& model, const Samples& samples, double gamma) {
  const auto indices = model.supportIndices();
  const auto coefficients = model.dualCoefficients();
  const auto intercepts = model.intercepts();
  std::vector<double> values;
  for (std::uint64_t i = 0; i < samples.rows(); ++i)
    for (std::size_t f = 0; f < intercepts.size(); ++f) {
      double sum = intercepts[f];
      for (std::size_t v = 0; v < indices.size(); ++v)
        sum += coefficients[f * indices.size() + v] * radial(samples, indices[v], i, gamma);
      values.push_back(sum);
    }
  return values;
}

// The row of the samples that the v-th support vector is, by what the model predicts of it alone.
void expectVectors(const Model& model, const Samples& samples) {
  const zelsvm::Samples vectors = model.supportVectors();
  const auto indices = model.supportIndices();
  ASSERT_EQ(vectors.rows(), indices.size());
  EXPECT_EQ(vectors.features(), samples.cols);
  const Samples chosen = samples.selection({indices.begin(), indices.end()});
  EXPECT_EQ(model.predict(vectors).decisionValues, model.predict(dense(chosen)).decisionValues);
  EXPECT_EQ(model.predict(vectors).values, model.predict(dense(chosen)).values);
}

TEST(LibraryModel, WhatWasLearntMakesTheDecisionValues) {
  for (const Formulation formulation : allFormulations)
    for (const zelsvm::Interval scale : {zelsvm::Interval{}, {-1, 1}})
      for (const bool isSparse : {false, true}) {
        SCOPED_TRACE(static_cast<int>(formulation));
        const Samples samples = samplesFor(formulation);
        const Model model =
            zelsvm::train(isSparse ? sparse(samples) : dense(samples), samples.labels,
                          {.formulation = formulation, .featureScale = scale});
        const double gamma = 1.0 / static_cast<double>(samples.cols);
        const auto found = model.predict(dense(samples));
        expectNear(
            decisionsOf(model, scaled(samples, scale), gamma),
            formulation >= Formulation::epsilonRegression ? found.values : found.decisionValues,
            1e-11);
        expectVectors(model, samples);
        const auto labels = model.labels();
        const auto counts = model.supportCounts();
        const auto indices = model.supportIndices();
        ASSERT_EQ(counts.size(), labels.size());
        const bool isClassified = formulation <= Formulation::nuClassification;
        for (std::size_t c = 0, v = 0; isClassified && c < labels.size(); ++c)
          for (const std::size_t end = v + counts[c]; v < end; ++v)
            EXPECT_EQ(samples.labels[indices[v]], labels[c]) << v;
        const Parameters inForce = model.parameters();
        EXPECT_EQ(inForce.gamma.value, gamma);
        EXPECT_EQ(inForce.formulation, formulation);
        EXPECT_EQ(inForce.featureScale.upper, scale.upper);
      }
}

TEST(LibraryModel, AModelFromATextFileTellsWhatThatHolds) {
  const Samples samples = classes();
  const Model model = zelsvm::train(sparse(samples), samples.labels,
                                    {.gamma = 0.25, .cost = 7, .featureScale = {-1, 1}});
  const zeltest::Workspace workspace;
  const std::string path = (workspace.folder() / "model").string();
  model.save(path);
  const Model loaded = Model::load(path);
  EXPECT_EQ(loaded.parameters().gamma.value, 0.25);
  EXPECT_EQ(loaded.parameters().cost, Parameters{}.cost);
  EXPECT_EQ(loaded.parameters().featureScale.lower, -1);
  EXPECT_TRUE(loaded.supportIndices().empty() && loaded.solves().empty());
  EXPECT_EQ(loaded.supportCounts(), model.supportCounts());
  expectNear(loaded.dualCoefficients(), model.dualCoefficients(), 1e-4);
  expectNear(loaded.predict(loaded.supportVectors()).decisionValues,
             model.predict(model.supportVectors()).decisionValues, 1e-4);
}

// Half the sum of c_i c_j K_ij less the sum of |c_i|, of a pair's coefficients.
double objectiveOf(const Model& model, const Samples& samples, std::size_t function, double gamma) {
  const auto indices = model.supportIndices();
  const auto all = model.dualCoefficients();
  const double* const c = all.data() + function * indices.size();
  double sum = 0;
  for (std::size_t v = 0; v < indices.size(); ++v) {
    for (std::size_t w = 0; w < indices.size(); ++w)
      sum += c[v] * c[w] * radial(samples, indices[v], indices[w], gamma) / 2;
    sum -= std::abs(c[v]);
  }
  return sum;
}

TEST(LibraryModel, SolvesAreToldPairByPair) {
  const Samples samples = classes();
  std::vector<double> best;
  for (const std::uint64_t limit : {0, 1, 25}) {
    const Parameters parameters{.gamma = 0.5, .cost = 10, .maxIterations = limit};
    const Model model = zelsvm::train(dense(samples), samples.labels, parameters);
    const auto solves = model.solves();
    ASSERT_EQ(solves.size(), 3u);
    for (std::size_t f = 0; f < solves.size(); ++f) {
      const zelsvm::Solve& solve = solves[f];
      EXPECT_EQ(solve.converged, limit == 0);
      EXPECT_EQ(solve.gap <= parameters.tolerance, limit == 0);
      EXPECT_NEAR(solve.objective, objectiveOf(model, samples, f, 0.5), 1e-9);
      EXPECT_TRUE(solve.seconds > 0 && solve.seconds < 60);
      if (limit == 0) {
        EXPECT_GT(solve.iterations, 25u);
        best.push_back(solve.objective);
      } else {
        EXPECT_EQ(solve.iterations, limit);
        EXPECT_GT(solve.objective, best[f]);
      }
    }
  }
  for (const Formulation formulation : allFormulations) {
    const Samples other = formulation <= Formulation::nuClassification
                              ? zeltest::classSamples(60, 3, {1, 2}, 4)
                              : samplesFor(formulation);
    const auto solves =
        zelsvm::train(dense(other), other.labels, {.formulation = formulation}).solves();
    ASSERT_EQ(solves.size(), 1u);
    EXPECT_TRUE(solves[0].converged && solves[0].gap <= 0.001 && solves[0].iterations > 0);
  }
}

// One by one the vectors are the columns of what is computed, together the samples are.
TEST(LibraryModel, SamplesAloneArePredictedAsTogether) {
  for (const bool isSparse : {false, true}) {
    const Samples samples = zeltest::classSamples(300, 7, {1, 2, 3}, 5);
    const auto rows = [&](const Samples& chosen) {
      return isSparse ? sparse(chosen) : dense(chosen);
    };
    const Model model = zelsvm::train(rows(samples), samples.labels);
    const auto together = model.predict(rows(samples)).decisionValues;
    for (const std::uint64_t count : {1, 4, 5, 32, 33}) {
      std::vector<double> found;
      for (std::uint64_t first = 0; first < samples.rows(); first += count) {
        std::vector<std::uint64_t> numbers;
        for (std::uint64_t i = first; i < std::min(first + count, samples.rows()); ++i)
          numbers.push_back(i);
        const auto part = model.predict(rows(samples.selection(numbers))).decisionValues;
        found.insert(found.end(), part.begin(), part.end());
      }
      EXPECT_EQ(found, together) << count;
    }
  }
}

}  // namespace
