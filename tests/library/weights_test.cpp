// Weights of samples: against copies of them, against samples that are absent, and against weights
// of classes; and trainings that start from multipliers.
#include <gtest/gtest.h>
#include <zelsvm/zelsvm.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/programs/tool_runs.h"
#include "support/samples.h"

namespace {

using zelsvm::Formulation;
using zelsvm::Model;
using zelsvm::Parameters;
using zeltest::expectNear;
using zeltest::Samples;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;
using Numbers = std::vector<double>;

zelsvm::Samples dense(const Samples& samples) {
  return zelsvm::Samples::dense(samples.values, samples.cols);
}

zelsvm::Samples sparse(const Samples& samples) {
  zeltest::CsrArrays csr = zeltest::compressed(samples);
  return zelsvm::Samples::csr(std::move(csr.values), std::move(csr.columns), std::move(csr.offsets),
                              samples.cols);
}

// As often as the weights say.
Samples copies(const Samples& samples) {
  std::vector<std::uint64_t> rows;
  for (std::uint64_t i = 0; i < samples.rows(); ++i)
    rows.insert(rows.end(), static_cast<std::size_t>(samples.weights[i]), i);
  Samples all = samples.selection(rows);
  all.weights.clear();
  return all;
}

struct Training {
  Model model;
  std::string report;

  [[nodiscard]] double objective() const {
    return std::stod(report.substr(report.rfind("obj = ") + 6));
  }
};

Training trainOn(const Samples& samples, const Parameters& parameters) {
  std::string report;
  Model model = zelsvm::train(dense(samples), samples.labels, parameters, samples.weights,
                              {.message = [&](std::string_view text) { report += text; }});
  return {std::move(model), report};
}

// Of a model's decisions on all samples; a regression's predictions.
Numbers decisions(const Model& model, const Samples& samples) {
  const auto found = model.predict(dense(samples));
  return found.decisionValues.empty() ? found.values : found.decisionValues;
}

class Weights : public testing::TestWithParam<int> {
 protected:
  [[nodiscard]] Samples samplesFor(std::uint64_t rows) const {
    return zeltest::samplesFor(GetParam(), rows, 4, 5);
  }

  Parameters parameters{.formulation = static_cast<Formulation>(GetParam()),
                        .nu = 0.7,
                        .tolerance = 1e-6,
                        .randomSeed = 3};
};

// One size for the solver of pairs, one for that of working sets.
TEST_P(Weights, OfWholeNumbersCountAsCopies) {
  for (const std::uint64_t rows : {210, 1600}) {
    Samples samples = samplesFor(rows);
    for (std::uint64_t i = 0; i < rows; ++i)
      samples.weights.push_back(static_cast<double>(rows < 1000 ? i % 5 % 4 : 1 + i % 5 % 3));
    const Training weighted = trainOn(samples, parameters);
    const Training copied = trainOn(copies(samples), parameters);
    EXPECT_NEAR(weighted.objective(), copied.objective(), 2e-5 * std::abs(copied.objective()));
    expectNear(decisions(weighted.model, samples), decisions(copied.model, samples), 1e-4);
  }
}

// With values, labels and targets of their own, which must not count in scaling and labels either.
TEST_P(Weights, OfZeroAreAbsentSamples) {
  parameters.tolerance = 1e-3;
  parameters.featureScale = {-1, 1};
  parameters.targetScale = {0, 2};
  parameters.probability = parameters.formulation != Formulation::oneClass;
  Samples all = samplesFor(120);
  std::vector<std::uint64_t> kept;
  for (std::uint64_t i = 0; i < 120; ++i) {
    all.weights.push_back(i % 3 == 1 ? 0 : 1);
    if (all.weights[i] != 0) {
      kept.push_back(i);
      continue;
    }
    all.labels[i] = 17;
    all.values[all.cols * i + i % all.cols] = 1000;
  }
  Samples some = all.selection(kept);
  some.weights.clear();
  const Workspace workspace;
  const auto saved = [&](const Model& model) {
    model.save((workspace.folder() / "model").string());
    return workspace.read("model");
  };
  const Model model = trainOn(some, parameters).model;
  const Training weighted = trainOn(all, parameters);
  EXPECT_EQ(decisions(weighted.model, all), decisions(model, all));
  EXPECT_EQ(saved(weighted.model), saved(model));
  EXPECT_EQ(weighted.report, trainOn(some, parameters).report);
  EXPECT_EQ(saved(zelsvm::train(sparse(all), all.labels, parameters, all.weights)),
            saved(zelsvm::train(sparse(some), some.labels, parameters)));

  const auto expected = zelsvm::crossValidate(dense(some), some.labels, parameters, 4);
  const auto found = zelsvm::crossValidate(dense(all), all.labels, parameters, 4, all.weights);
  for (std::size_t k = 0; k < kept.size(); ++k)
    EXPECT_EQ(found.predictions[kept[k]], expected.predictions[k]);
  EXPECT_EQ(found.overall.accuracy, expected.overall.accuracy);
  EXPECT_EQ(found.overall.squaredCorrelation, expected.overall.squaredCorrelation);
  EXPECT_EQ(found.folds.at(3).meanSquaredError, expected.folds.at(3).meanSquaredError);
  for (std::size_t i = 1; i < 120; i += 3) EXPECT_NE(found.predictions[i], 0);
}

TEST_P(Weights, CountInScores) {
  Samples samples = samplesFor(60);
  for (std::uint64_t i = 0; i < 60; ++i)
    samples.weights.push_back(0.25 * static_cast<double>(1 + i % 7));
  const auto found =
      zelsvm::crossValidate(dense(samples), samples.labels, parameters, 3, samples.weights);
  double all = 0, right = 0, error = 0, meanP = 0, meanT = 0;
  for (std::size_t i = 0; i < 60; ++i) {
    const double w = samples.weights[i];
    const double p = found.predictions[i];
    const double t = samples.labels[i];
    all += w;
    right += p == t ? w : 0;
    error += w * (p - t) * (p - t);
    meanP += w * p;
    meanT += w * t;
  }
  if (!zeltest::isRegression(GetParam())) {
    EXPECT_NEAR(found.overall.accuracy, 100 * right / all, 1e-10);
    return;
  }
  meanP /= all;
  meanT /= all;
  double pp = 0, tt = 0, pt = 0;
  for (std::size_t i = 0; i < 60; ++i) {
    const double p = found.predictions[i] - meanP;
    const double t = samples.labels[i] - meanT;
    pp += samples.weights[i] * p * p;
    tt += samples.weights[i] * t * t;
    pt += samples.weights[i] * p * t;
  }
  EXPECT_NEAR(found.overall.meanSquaredError, error / all, 1e-10);
  EXPECT_NEAR(found.overall.squaredCorrelation, pt * pt / (pp * tt), 1e-10);
}

INSTANTIATE_TEST_SUITE_P(Formulations, Weights, testing::ValuesIn(zeltest::allTypes));

// Also those of pairs of labels, and together with those of samples.
TEST(ClassWeights, AreWeightsOfTheirSamples) {
  for (const auto formulation : {Formulation::cClassification, Formulation::nuClassification}) {
    Samples samples = zeltest::classSamples(150, 4, {1, 2, 3}, 6);
    Parameters parameters{.formulation = formulation, .cost = 3, .nu = 0.2};
    for (std::uint64_t i = 0; i < 150; ++i) samples.weights.push_back(i % 4 == 0 ? 2 : 1);
    Samples weighted = samples;
    for (std::uint64_t i = 0; i < 150; ++i)
      weighted.weights[i] *= samples.labels[i] == 2 ? 1.75 : 1;
    const Numbers plain = decisions(trainOn(samples, parameters).model, samples);
    const Numbers expected = decisions(trainOn(weighted, parameters).model, samples);
    parameters.classWeights = {{2, 1.75}};
    const Numbers found = decisions(trainOn(samples, parameters).model, samples);
    EXPECT_NE(found, plain);
    expectNear(found, expected, 2e-3);
  }
}

TEST(ClassWeights, OfTheToolsAreOfCClassificationAlone) {
  const Workspace workspace;
  workspace.write("data", fileText(zeltest::classSamples(60, 4, {1, 2}, 6)));
  const auto modelOf = [&](const std::string& options) {
    succeed(workspace, words("zelsvm-train " + options + "data model"));
    return workspace.read("model");
  };
  EXPECT_EQ(modelOf("-s 1 -n 0.4 -w 1:1.5 "), modelOf("-s 1 -n 0.4 "));
  EXPECT_NE(modelOf("-w 1:1.5 "), modelOf(""));
}

TEST(SampleWeights, BadOnesAreRefused) {
  const Samples samples = zeltest::classSamples(20, 2, {1, 2}, 7);
  const auto expectRefusal = [&](const std::string& message, const Numbers& weights,
                                 const Parameters& parameters = {}) {
    try {
      static_cast<void>(zelsvm::train(dense(samples), samples.labels, parameters, weights));
      ADD_FAILURE() << "nothing was thrown instead of: " << message;
    } catch (const zelsvm::AppException& error) {
      EXPECT_EQ(error.what(), message);
    }
  };
  for (const double bad : {-1.0, std::numeric_limits<double>::quiet_NaN(), HUGE_VAL}) {
    Numbers weights(20, 1);
    weights[3] = bad;
    expectRefusal("The weight of sample 4 is not a finite number of 0 or more.", weights);
  }
  expectRefusal("There must be one weight for every sample.", Numbers(19, 1));
  expectRefusal("The weights must add up to a finite number above 0.", Numbers(20, 0));
  expectRefusal("The weights must add up to a finite number above 0.", Numbers(20, 1e308));
  // A tenth of the weight on one side leaves room for a nu of a fifth at most.
  Numbers weights(20, 9);
  for (std::size_t i = 0; i < 20; i += 2) weights[i] = 1;
  expectRefusal("Error: there is no feasible solution for the nu value.", weights,
                {.formulation = Formulation::nuClassification, .nu = 0.25});
}

// The starts' own tests have the rest; here labels that do not count and shorter starts.
TEST(Start, LeadsToTheSameModel) {
  Samples samples = zeltest::classSamples(90, 3, {1, 2, 3, 4}, 8);
  for (const double label : samples.labels) samples.weights.push_back(label == 3 ? 0 : 1.5);
  const Parameters parameters{.cost = 2, .tolerance = 1e-6};
  const auto trainFrom = [&](const Numbers& start) {
    return zelsvm::train(dense(samples), samples.labels, parameters, samples.weights, {}, {start});
  };
  const Numbers expected = decisions(trainFrom({}), samples);
  for (const std::size_t length : {90, 40}) {
    Numbers start;
    for (std::size_t i = 0; i < 3 * length; ++i)
      start.push_back(10 * std::sin(static_cast<double>(i)));
    const Numbers found = decisions(trainFrom(start), samples);
    EXPECT_NE(found, expected);
    expectNear(found, expected, 1e-4);
    start.back() = HUGE_VAL;
    EXPECT_THROW(trainFrom(start), zelsvm::AppException);
    start.pop_back();
    EXPECT_THROW(trainFrom(start), zelsvm::AppException);
  }
  EXPECT_THROW(trainFrom(Numbers(3 * 91)), zelsvm::AppException);
}

}  // namespace
