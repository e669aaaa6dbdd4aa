// Weights of classes: how they are spelled, and what they do.
#include "zeldplus/zelsvm/engine/class_weights.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "data/temp_file.h"
#include "support/solved_problem.h"
#include "zeldplus/inc/zelerrors.h"

namespace {

using Weights = std::map<double, double>;
using zelsvm::parseClassWeights;
using zelsvm::SvmParameters;
using zeltest::failureOf;
using zeltest::SolvedProblem;
using zeltest::train;

TEST(ClassWeights, Spellings) {
  for (const auto& [text, expected] : std::map<std::string, Weights>{
           {"", {}},
           {"1:2", {{1, 2}}},
           {"1:2 -1:0.5", {{1, 2}, {-1, 0.5}}},
           {"  1:2   -1:5e-1  ", {{1, 2}, {-1, 0.5}}},
           {"'1:2 -1:0.5'", {{1, 2}, {-1, 0.5}}},
           {"\"1\":2 '\"3':4", {{1, 2}, {3, 4}}},
           {"1:2 1:5", {{1, 2}}},   // the first one counts
           {"0:2 -0:5", {{0, 2}}},  // one label
           {"1:2 3", {{1, 2}}},     // a label without a weight ends the list
           {"1:2 3:", {{1, 2}}},
           {"7", {}},
           {"1e300:1e-300", {{1e300, 1e-300}}},
       })
    EXPECT_EQ(parseClassWeights(text), expected) << text;
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
  parameters.svmType = 1;  // only C-classification looks at them
  parameters.nu = 0.3;
  EXPECT_EQ(train(samples, parameters).only().Cp, 0.5);
}

}  // namespace
