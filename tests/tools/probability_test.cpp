// Probability estimates from the command line.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "tools/tool_runs.h"

namespace {

using zeltest::fileText;
using zeltest::numbersIn;
using zeltest::restOfLine;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

// Checks the lines behind the first: a label, its probability the largest, all adding up to 1.
void expectProbabilities(const std::string& out, const std::vector<double>& labels) {
  std::istringstream stream(out);
  std::string line;
  std::getline(stream, line);
  EXPECT_EQ(line.substr(0, 8), "labels: ");
  EXPECT_EQ(numbersIn(line.substr(8)), labels);
  while (std::getline(stream, line)) {
    const auto numbers = numbersIn(line);
    ASSERT_EQ(numbers.size(), labels.size() + 1) << line;
    const auto best = std::max_element(numbers.begin() + 1, numbers.end());
    EXPECT_EQ(numbers[0], labels.at(static_cast<std::size_t>(best - numbers.begin() - 1))) << line;
    double sum = 0;
    for (std::size_t c = 1; c < numbers.size(); ++c) sum += numbers[c];
    EXPECT_NEAR(sum, 1, 1e-5) << line;
  }
}

TEST(ProbabilityTools, ClassesOfARealDataSet) {
  const Workspace workspace;
  std::filesystem::copy_file(zeltest::cancerFile(), workspace.folder() / "data");
  succeed(workspace, words("zelsvm-train -q -b 1 -R 1 -x -1:1 data model"));
  const std::string text = succeed(workspace, words("zelsvm-predict -b 1 data model out"));
  EXPECT_GT(numbersIn(restOfLine(text, "Accuracy = ")).at(0), 95);
  expectProbabilities(workspace.read("out"), {-1, 1});
  succeed(workspace, words("zelsvm-train -q -R 1 -x -1:1 data plain"));
  succeed(workspace, words("zelsvm-predict -q data plain out-plain"));
  succeed(workspace, words("zelsvm-predict -q data model out-model"));
  EXPECT_EQ(workspace.read("out-model"), workspace.read("out-plain"));
  const auto report = succeed(workspace, words("zelsvm-train -q -v 3 -R 1 -b 1 -x -1:1 data"));
  EXPECT_GT(numbersIn(restOfLine(report, "  Accuracy = ")).at(0), 90);
}

TEST(ProbabilityTools, ManyClasses) {
  const Workspace workspace;
  workspace.write("data", fileText(zeltest::classSamples(160, 4, {7, -2, 0, 3}, 1)));
  for (const char* type : {"-s 0", "-s 1 -n 0.3"}) {
    succeed(workspace, words(std::string("zelsvm-train -q -R 1 -b 1 ") + type + " data model"));
    succeed(workspace, words("zelsvm-predict -q -b 1 data model out"));
    expectProbabilities(workspace.read("out"), {-2, 0, 3, 7});
  }
}

TEST(ProbabilityTools, OneLabelIsTheLikelierOne) {
  const Workspace workspace;
  workspace.write("data", "5 1:1\n5 1:2\n5 1:3\n5 1:4\n");
  succeed(workspace, words("zelsvm-train -q -b 1 data model"));
  const std::string text = succeed(workspace, words("zelsvm-predict -b 1 data model out"));
  EXPECT_EQ(restOfLine(text, "Accuracy = "), "100%");
  expectProbabilities(workspace.read("out"), {5, -5});
  succeed(workspace, words("zelsvm-train -q -b 1 -v 2 data"));
}

TEST(ProbabilityTools, RegressionReportsTheScale) {
  const Workspace workspace;
  workspace.write("data", fileText(zeltest::targetSamples(60, 3, 1)));
  succeed(workspace, words("zelsvm-train -q -b 1 -R 1 -s 3 data model"));
  const std::string sigma = restOfLine(workspace.read("model"), "\nSigma: ");
  const std::string text = succeed(workspace, words("zelsvm-predict -b 1 data model out"));
  EXPECT_EQ(text.substr(text.find("\n\nProb")),
            "\n\nProbability model of the test data with Laplace distribution:\n"
            "  location parameter = predicted value\n  scale paremeter = " +
                sigma + "\n");
  // The noise is spread evenly over [-0.3, 0.3].
  EXPECT_NEAR(numbersIn(sigma).at(0), 0.2, 0.1);
}

}  // namespace
