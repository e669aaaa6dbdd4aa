// Label dispatch, and one model out of the problems of all label pairs.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <vector>

#include "base/errors.h"
#include "runs/processor.h"
#include "support/solved_problem.h"
#include "support/temp_file.h"
#include "support/tested_machine.h"

namespace {

using zelsvm::GenericModel;
using zelsvm::ParameterChecks;
using zelsvm::SvmContext;
using zelsvm::SvmParameters;
using zeltest::DataSet;
using zeltest::failureOf;
using zeltest::Samples;
using zeltest::train;
using zeltest::valuesOf;
using Numbers = std::vector<double>;

// A training set with its model.
struct Trained {
  Trained(const Samples& samples, const SvmParameters& parameters)
      : context(parameters, ParameterChecks::training, zeltest::testedMachine()),
        set(samples, context) {
    training = train(context, set.data(), model);
  }

  SvmContext<double> context;
  DataSet set;
  GenericModel<double> model;
  zeltest::Training training;
};

// sum_v coefficient(v) K(x_v, x) - rho over the model's vectors begin … end - 1.
template <typename Coefficient>
double partialSum(const Trained& trained, std::uint64_t begin, std::uint64_t end, const double* x,
                  const Coefficient& coefficient) {
  auto& vectors = trained.model.vectors();
  Numbers row(vectors.cols());
  double sum = 0;
  for (std::uint64_t v = begin; v < end; ++v) {
    vectors.copyRow(row.data(), v, true);
    sum += coefficient(v) * zeltest::kernelValue(trained.context, row.data(), x, vectors.cols());
  }
  return sum;
}

// The decision value of the labels at positions a < b, read from the model's layout.
double pairDecision(const Trained& trained, std::uint64_t a, std::uint64_t b, const double* x) {
  const auto& model = trained.model;
  const std::uint64_t k = model.labels().size();
  std::uint64_t pair = 0;  // counted through (0, 1), (0, 2), …
  for (std::uint64_t i = 0; i < a; ++i) pair += k - 1 - i;
  pair += b - a - 1;
  const auto side = [&](std::uint64_t cls, std::uint64_t column) {
    return partialSum(trained, model.classStarts()[cls], model.classStarts()[cls + 1], x,
                      [&](std::uint64_t v) { return model.coefficients()[v * (k - 1) + column]; });
  };
  return side(a, b - 1) + side(b, a) - model.rho()[pair];
}

class Multiclass : public testing::TestWithParam<int> {};

TEST_P(Multiclass, EveryPairDecidesAsIfTrainedAlone) {
  // Labels in any file order, one of them with two samples only.
  Samples samples = zeltest::classSamples(60, 3, {7, -3, 0, 2}, 3);
  samples.labels[10] = samples.labels[33] = 5;
  SvmParameters parameters{.svmType = GetParam(), .C = 2, .nu = 0.2, .weights = {{7, 3}, {0, 0.5}}};
  const Trained all(samples, parameters);
  const Numbers labels{-3, 0, 2, 5, 7};
  EXPECT_EQ(valuesOf(all.model.labels()), labels);
  ASSERT_EQ(all.model.rho().size(), 10);
  EXPECT_EQ(all.training.problems.size(), 10);
  for (std::uint64_t a = 0; a < 5; ++a)
    for (std::uint64_t b = a + 1; b < 5; ++b) {
      std::vector<std::uint64_t> rows;  // the first label's samples, then the second's
      for (const double label : {labels[a], labels[b]})
        for (std::uint64_t i = 0; i < 60; ++i)
          if (samples.labels[i] == label) rows.push_back(i);
      const Trained alone(samples.selection(rows), parameters);
      for (std::uint64_t i = 0; i < 60; ++i)
        EXPECT_NEAR(pairDecision(all, a, b, samples.row(i)),
                    pairDecision(alone, 0, 1, samples.row(i)), 1e-12)
            << labels[a] << " against " << labels[b];
    }
}

INSTANTIATE_TEST_SUITE_P(Formulations, Multiclass,
                         testing::Values(zelsvm::SVM_TYPE_C_CLASSIFICATION,
                                         zelsvm::SVM_TYPE_NU_CLASSIFICATION));

TEST(MulticlassModel, ListsTheSamplesInUseByClassAndNumber) {
  const Samples samples = zeltest::classSamples(90, 2, {3, 1, 2}, 4);
  const Trained trained(samples, {.gamma = 4, .C = 0.5});
  const auto ids = valuesOf(trained.model.vectors().rowIds());
  const Numbers coefficients = valuesOf(trained.model.coefficients());
  const auto order = [&](auto a, auto b) {
    return std::pair(samples.labels[a], a) < std::pair(samples.labels[b], b);
  };
  EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end(), order));
  ASSERT_EQ(coefficients.size(), 2 * ids.size());
  for (std::size_t v = 0; v < ids.size(); ++v)
    EXPECT_FALSE(coefficients[2 * v] == 0 && coefficients[2 * v + 1] == 0) << v;
  for (const double c : coefficients) EXPECT_FALSE(c == 0 && std::signbit(c));  // never -0
}

TEST(LabelDispatch, OneLabelNeedsNoSolver) {
  const Trained trained({2, {1, 2, 3, 4, 5, 6}, {4, 4, 4}}, {});
  EXPECT_TRUE(trained.training.problems.empty());
  EXPECT_EQ(valuesOf(trained.model.labels()), (Numbers{4, -4}));
  EXPECT_EQ(valuesOf(trained.model.rho()), Numbers{-1});
  EXPECT_EQ(valuesOf(trained.model.coefficients()), Numbers{0});
  EXPECT_EQ(valuesOf(trained.model.classSizes()), (std::vector<unsigned long long>{1, 0}));
  EXPECT_EQ(trained.model.vectors().rowIds()[0], 0);
}

TEST(LabelDispatch, BothZerosAreOneLabel) {
  Samples samples = zeltest::classSamples(40, 2, {0, 1e300, -0.0, -5}, 1);
  const Trained three(samples, {});
  EXPECT_EQ(valuesOf(three.model.labels()), (Numbers{-5, 0, 1e300}));
  for (double& label : samples.labels) label = label == -5 ? 0 : label;
  const Trained two(samples, {});
  EXPECT_EQ(two.training.only().y.size(), 40);
  EXPECT_EQ(std::accumulate(two.training.only().y.begin(), two.training.only().y.end(), 0), 20);
}

// Twenty billion pairs are refused before a single one is made.
TEST(LabelDispatch, PairsBeyondMemoryAreRefusedAtOnce) {
  Samples samples{1, Numbers(200'000, 1), Numbers(200'000)};
  std::iota(samples.labels.begin(), samples.labels.end(), -100'000.0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(failureOf<zel::AppException>([&] { train(samples, {}); }),
            "The solutions of 19999900000 label pairs do not fit into memory.");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
