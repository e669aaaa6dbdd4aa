// Probability estimates from the command line.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "support/programs/tool_runs.h"
#include "text_match.h"

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
                sigma + " (in units of the targets)\n");
  // The noise is spread evenly over [-0.3, 0.3].
  EXPECT_NEAR(numbersIn(sigma).at(0), 0.2, 0.1);
}

// The model holds it in units of the scaled targets.
TEST(ProbabilityTools, TheScaleThatIsReportedFollowsTheTargets) {
  const Workspace workspace;
  zeltest::Samples samples = zeltest::targetSamples(60, 3, 1);
  std::vector<double> sigmas;
  std::vector<double> reported;
  for (const char* data : {"data", "wide"}) {
    workspace.write(data, fileText(samples));
    for (double& target : samples.labels) target *= 1000;
    succeed(workspace,
            words(std::string("zelsvm-train -q -b 1 -R 1 -s 4 -e 1e-6 -y 0:1 ") + data + " model"));
    sigmas.push_back(numbersIn(restOfLine(workspace.read("model"), "\nSigma: ")).at(0));
    const std::string text =
        succeed(workspace, words(std::string("zelsvm-predict -b 1 ") + data + " model out"));
    reported.push_back(numbersIn(restOfLine(text, "  scale paremeter = ")).at(0));
  }
  EXPECT_NEAR(sigmas[1], sigmas[0], 1e-3 * sigmas[0]);
  EXPECT_NEAR(reported[1], 1000 * reported[0], reported[0]);
  EXPECT_NEAR(reported[0], 0.2, 0.1);
}

// Where a fold holds all samples of a label, by the seed; the training ends as it would without the
// warning.
TEST(ProbabilityTools, WarnOfLabelsThatOneFoldHoldsAndOnlyThen) {
  const Workspace workspace;
  zeltest::Samples samples = zeltest::classSamples(33, 3, {1}, 2);
  for (std::uint64_t i : {3u, 17u}) samples.labels[i] = 7;
  workspace.write("two", fileText(samples));
  for (std::uint64_t i = 20; i < 33; ++i) samples.labels[i] = 4;
  workspace.write("three", fileText(samples));
  int warned = 0;
  int silent = 0;
  for (const std::string data : {"two", "three"})
    for (const std::string options : {"", "-s 1 -n 0.05 ", "-v 3 "})
      for (int seed = 1; seed <= 8; ++seed) {
        const std::string line = "-q -b 1 " + options + "-R " + std::to_string(seed) + " " + data;
        SCOPED_TRACE(line);
        const auto result = workspace.run("zelsvm-train", words(line));
        if (result.err.empty()) {
          EXPECT_EQ(result.status, 0) << result.out;
          ++silent;
          continue;
        }
        EXPECT_TRUE(
            zeltest::matches(result.err,
                             "zelsvm-train: warning: label 7 has too few samples for the "
                             "five folds of -b 1: one fold holds all of them [(][12][)]\n"));
        EXPECT_EQ(result.status, 1);
        EXPECT_TRUE(zeltest::matches(result.out,
                                     "(.|\n)*(Failed to optimize the svm|Error: there is no "
                                     "feasible solution for the nu value)[.]\n"));
        ++warned;
      }
  EXPECT_GT(warned, 8);
  EXPECT_GT(silent, 8);
  workspace.write("data", "1 1:1\n1 1:2\n1 1:3\n2 1:4\n");
  const auto result = workspace.run("zelsvm-train", words("-q -b 0 data"));
  EXPECT_EQ(result.err, "");
}

}  // namespace
