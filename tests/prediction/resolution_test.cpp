// From decision values to labels, measures and the output file.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"
#include "prediction/evaluation.h"
#include "prediction/prediction_file.h"
#include "prediction/prediction_handlers.h"
#include "support/host_vectors.h"
#include "support/models.h"
#include "support/temp_file.h"
#include "support/tested_machine.h"

namespace {

using zelsvm::HostVector;
using zelsvm::ProblemKind;
using zeltest::hostVector;
using zeltest::TempFile;
using zeltest::valuesOf;
using Values = std::vector<double>;
using Model = zelsvm::GenericModel<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// decisions: one list per pair of labels with a value per sample. Predictions start as 0.
Values resolved(const Values& labels, const std::vector<Values>& decisions,
                zelsvm::Undecided undecided = zelsvm::Undecided::keepsPrediction) {
  Model model;
  model.setLabels(hostVector(labels));
  Values all;
  for (const auto& pair : decisions) all.insert(all.end(), pair.begin(), pair.end());
  HostVector<double> output(decisions[0].size());
  output.fill(0);
  zelsvm::MulticlassResolver<double>(undecided).handle(output, hostVector(all), model);
  return valuesOf(output);
}

TEST(MulticlassResolver, VotesAreCountedByPair) {
  EXPECT_EQ(resolved({1, -1}, {{0.5, -0.5, 1e-300, 0, nan}}), (Values{1, -1, 1, 0, -1}));
  // Pairs (0,1), (0,2), (1,2); samples: clear winners, a cycle each way, ties, none.
  EXPECT_EQ(resolved({3, 5, 8}, {{1, -1, 9, 1, -1, 0, 0, 0, nan},
                                 {1, 9, -1, -1, 1, 1, 0, 0, nan},
                                 {9, 1, -1, 1, -1, 1, -1, 0, nan}}),
            (Values{3, 5, 8, 3, 3, 3, 8, 0, 8}));
  // Four labels: the winner of three pairs, then two labels with two votes each.
  EXPECT_EQ(resolved({1, 2, 3, 4}, {{-1, -1}, {-1, 1}, {-1, -1}, {-1, 1}, {1, -1}, {1, 1}}),
            (Values{3, 2}));
  // Labels that are equal share their votes; a NaN is no label to vote for.
  EXPECT_EQ(resolved({1, 2, 1}, {{-1, -1}, {1, -1}, {1, -1}}), (Values{2, 1}));
  EXPECT_EQ(resolved({nan, 2}, {{1, -1}}), (Values{0, 2}));
  // More samples than are counted at a time.
  Values signs(1100, -1);
  for (const std::size_t s : {0u, 511u, 512u, 1099u}) signs[s] = 1;
  const Values labels = resolved({6, 5}, {signs});
  for (std::size_t s = 0; s < signs.size(); ++s) ASSERT_EQ(labels[s], signs[s] > 0 ? 6 : 5) << s;
}

TEST(MulticlassResolver, UndecidedSamplesMayHaveTheFirstLabel) {
  const auto first = zelsvm::Undecided::hasFirstLabel;
  EXPECT_EQ(resolved({5, -1}, {{0, -0.0, -1, 1}}, first), (Values{5, 5, -1, 5}));
  EXPECT_EQ(resolved({3, 5, 8}, {{0, 0, -1}, {0, 0, 0}, {0, -1, 0}}, first), (Values{3, 8, 5}));
}

class Evaluation : public testing::Test {
 protected:
  // Primary and secondary measure of the predictions.
  std::pair<double, double> measures(ProblemKind kind, const Values& predictions,
                                     const Values& targets) {
    zeltest::Samples samples = zeltest::unlabelled(1, Values(targets.size(), 1));
    samples.labels = targets;
    zeltest::DataSet set(samples, context);
    zelsvm::GenericEvaluationHandler<double> handler(kind, set.data());
    HostVector<double> output = hostVector(predictions);
    handler.handle(output, output, Model());
    return {handler.evaluator().primaryMeasure(), handler.evaluator().secondaryMeasure()};
  }
  zelsvm::SvmContext<double> context{{}, zelsvm::ParameterChecks::model, zeltest::testedMachine()};
};

TEST_F(Evaluation, AccuracyCountsExactEquality) {
  using Pair = std::pair<double, double>;
  for (const ProblemKind kind : {ProblemKind::classification, ProblemKind::oneClass}) {
    EXPECT_EQ(measures(kind, {1, 2, 3, -0.0}, {1, 2, 4, 0}), Pair(75, -1));
    EXPECT_EQ(measures(kind, {1, std::nextafter(2, 3), nan}, {2, 2, nan}), Pair(0, -1));
    EXPECT_EQ(measures(kind, {1, 1, 1}, {1, 0, 0}).first, 100.0 / 3);
  }
}

TEST_F(Evaluation, RegressionMeasuresErrorAndSquaredCorrelation) {
  const auto regression = [&](const Values& p, const Values& t) {
    return measures(ProblemKind::regression, p, t);
  };
  EXPECT_EQ(regression({1, 2, 4}, {1, 2, 4}), (std::pair<double, double>(0, 1)));
  const auto opposite = regression({3, 2, 1}, {1, 2, 3});
  EXPECT_NEAR(opposite.first, 8.0 / 3, 1e-15);
  EXPECT_NEAR(opposite.second, 1, 1e-15) << "squared";
  // Deviations (-1, 0, 1) and (-4/3, 5/3, -1/3) of means 2 and 7/3.
  const auto some = regression({1, 2, 3}, {1, 4, 2});
  EXPECT_NEAR(some.first, 5.0 / 3, 1e-15);
  EXPECT_NEAR(some.second, 1.0 / (2 * 42.0 / 9), 1e-15);
  EXPECT_TRUE(std::isnan(regression({2, 2}, {1, 3}).second));
  EXPECT_EQ(regression({2, 2}, {1, 3}).first, 1);
}

TEST(PredictionFile, HasTheExactLayout) {
  Model model;
  const HostVector<double> none;
  const HostVector<double> predictions = hostVector<double>({1, -2.5, 1e-7, 12345678, -0.0});
  const TempFile file("longer than what follows\nthe old text must go away\n and so on\n");
  zelsvm::writePredictions(file.path(), predictions, none, model);
  EXPECT_EQ(file.text(), "1 \n-2.5 \n1e-07 \n1.23457e+07 \n-0 \n") << "a model without labels";
  model.setLabels(hostVector<double>({-1, 2.5, 10}));
  zelsvm::writePredictions(file.path(), hostVector<double>({10, -1}),
                           hostVector<double>({0.25, 0.125, 0.625, 1e-7, 0.5, 0.4999999}), model);
  EXPECT_EQ(file.text(), "labels: -1 2.5 10 \n10 0.25 0.125 0.625 \n-1 1e-07 0.5 0.5 \n");
  for (const std::uint64_t count : {1, 100000}) {
    HostVector<double> many(count);
    many.fill(1);
    EXPECT_EQ(zeltest::failureOf<zel::AppException>(
                  [&] { zelsvm::writePredictions("/dev/full", many, none, model); }),
              "failed writing to file: /dev/full");
  }
  EXPECT_EQ(zeltest::failureOf<zel::AppException>(
                [&] { zelsvm::writePredictions("/nowhere/out", predictions, none, model); }),
            "failed to open /nowhere/out.");
}

}  // namespace
