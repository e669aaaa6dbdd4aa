// Weights of classes: how they are spelled, and what they do.
#include "parameters/class_weights.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "base/errors.h"
#include "support/solved_problem.h"
#include "support/temp_file.h"
#include "support/warning_log.h"

namespace {

using Sentences = std::vector<std::string>;
using Weights = std::map<double, double>;
using zelsvm::parseClassWeights;
using zelsvm::SvmParameters;
using zeltest::failureOf;
using zeltest::SolvedProblem;
using zeltest::train;

TEST(ClassWeights, Spellings) {
  struct Case {
    std::string text;
    Weights weights;
    Sentences warnings;
  };
  const auto says = [](const std::string& text) { return Sentences{"class weights: " + text}; };
  for (const auto& [text, weights, warnings] : {
           Case{"", {}, {}},
           Case{"1:2", {{1, 2}}, {}},
           Case{"  1:2   -1:5e-1  ", {{1, 2}, {-1, 0.5}}, {}},
           Case{"'1:2 -1:0.5'", {{1, 2}, {-1, 0.5}}, {}},
           Case{"\"1\":2 '\"3':4", {{1, 2}, {3, 4}}, {}},
           Case{"1e300:1e-300", {{1e300, 1e-300}}, {}},
           Case{"1:2 1:5", {{1, 2}}, says("\"1\" has a weight already, which counts")},
           Case{"0:2 -0:5", {{0, 2}}, says("\"-0\" has a weight already, which counts")},
           Case{"1:2 3", {{1, 2}}, says("\"3\" has no weight and is ignored")},
           Case{"1:2 3:", {{1, 2}}, says("\"3\" has no weight and is ignored")},
           Case{"7", {}, says("\"7\" has no weight and is ignored")},
           Case{"::", {}, says("\"::\" has no weight and is ignored")},
           Case{"cat:2", {{0, 2}}, says("\"cat\" is no number and counts as 0")},
           Case{"1:2,3:4", {{1, 2}}, says("\"2,3:4\" goes on behind its number, which is ignored")},
       }) {
    const zeltest::WarningLog log;
    EXPECT_EQ(parseClassWeights(text), weights) << text;
    EXPECT_EQ(log.sentences, warnings) << text;
  }
}

TEST(ClassWeights, WarnOfLabelsThatNoSampleHas) {
  const zeltest::WarningLog log;
  const double labels[] = {1, 20261123, -1};
  zelsvm::warnOfAbsentLabels({{-1, 2}, {20261123, 2}, {20261124, 2}}, labels);
  EXPECT_EQ(log.sentences, Sentences{"class weights: \"20261124\" is no label of the data"});
}

TEST(ClassWeights, RefusesWhatIsNotAboveZero) {
  for (const char* text : {"1:0", "1:-2", "1:nan", "1:x", "1:2 3:0", "1:2 1:0", "1: 0"})
    EXPECT_EQ(failureOf<zel::AppException>([&] { parseClassWeights(text); }),
              "Invalid classification weight.")
        << text;
  std::string text = "1:2";
  text.resize(4095, ' ');
  EXPECT_EQ(parseClassWeights(text), (Weights{{1, 2}}));
  text += ' ';
  EXPECT_EQ(failureOf<zel::AppException>([&] { parseClassWeights(text); }),
            "The classification weights are too long.");
}

TEST(ClassWeights, MultiplyTheBoundsOfTheirClass) {
  SvmParameters parameters{.C = 0.5, .weights = {{3, 4}, {9, 7}}};
  const zeltest::Samples samples = zeltest::classSamples(60, 2, {8, 3}, 1);
  const auto training = train(samples, parameters);
  const SolvedProblem& problem = training.only();
  EXPECT_EQ(problem.Cp, 2);  // the smaller label is the positive class
  EXPECT_EQ(problem.Cn, 0.5);
  double largest[2] = {0, 0};
  for (std::uint64_t i = 0; i < 60; ++i) {
    EXPECT_EQ(problem.y[i], samples.labels[i] == 3 ? 1 : -1);
    double& bound = largest[problem.y[i] > 0 ? 0 : 1];
    bound = std::max(bound, problem.alpha[i]);
  }
  EXPECT_GT(largest[0], 0.5);
  EXPECT_LE(largest[0], 2);
  EXPECT_EQ(largest[1], 0.5);
  EXPECT_EQ(training.text.find("nu = "), std::string::npos);  // no one nu

  parameters.weights = {{3, 4}, {8, 4}};
  EXPECT_NE(train(samples, parameters).text.find("nu = "), std::string::npos);
  parameters.svmType = zelsvm::SVM_TYPE_NU_CLASSIFICATION;
  parameters.nu = 0.3;
  EXPECT_EQ(train(samples, parameters).only().Cp, 2);
}

}  // namespace
