// Cross-validation against the same folds trained and predicted by hand, its report, and the test
// tool.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>

#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

using zeltest::fileText;
using zeltest::numbersIn;
using zeltest::refuse;
using zeltest::restOfLine;
using zeltest::Samples;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

using Rows = std::vector<std::uint64_t>;

// The folds of a seed, by the shuffle that the tools promise on every machine.
std::vector<Rows> foldsOf(std::uint64_t n, std::uint64_t folds, std::uint32_t seed) {
  Rows order(n);
  std::iota(order.begin(), order.end(), 0);
  for (std::uint64_t i = 0; i < n; ++i) {
    seed = seed * 214013u + 2531011u;
    std::swap(order[i], order[i + ((seed >> 16) & 0x7fff) % (n - i)]);
  }
  std::vector<Rows> result(folds);
  for (std::uint64_t f = 0; f < folds; ++f) {
    const auto at = [&](std::uint64_t g) {
      return order.begin() + static_cast<std::ptrdiff_t>(g * n / folds);
    };
    result[f].assign(at(f), at(f + 1));
    std::sort(result[f].begin(), result[f].end());
  }
  return result;
}

// What prediction reports for each fold after training on the others.
std::vector<double> byHand(const Workspace& workspace, const Samples& samples,
                           const std::vector<Rows>& folds, const std::string& options,
                           const std::string& report) {
  std::vector<double> measures;
  for (const Rows& fold : folds) {
    Rows others;
    for (std::uint64_t i = 0; i < samples.rows(); ++i)
      if (!std::binary_search(fold.begin(), fold.end(), i)) others.push_back(i);
    workspace.write("part", fileText(samples.selection(others)));
    workspace.write("rest", fileText(samples.selection(fold)));
    succeed(workspace, words("zelsvm-train -q " + options + " part model"));
    const std::string text = succeed(workspace, words("zelsvm-predict rest model out"));
    measures.push_back(numbersIn(restOfLine(text, report)).at(0));
  }
  return measures;
}

// The numbers behind the report's last heading.
std::vector<double> foldMeasures(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '%'), text.end());
  return numbersIn(text.substr(text.rfind("\n  ") + 3));
}

TEST(CrossValidation, FoldsAgreeWithTrainingByHand) {
  const Workspace workspace;
  // No row is all zero: model files of dense rows lose such vectors.
  const Samples classes = zeltest::classSamples(157, 9, {3, -1, 8}, 5);
  const Samples targets = zeltest::targetSamples(83, 3, 6);
  struct Case {
    const Samples& samples;
    std::string options, report;
  };
  for (const auto& [samples, options, report] :
       {Case{classes, "-g 0.5 -c 3", "Accuracy = "}, Case{classes, "-X -s 1 -n 0.3", "Accuracy = "},
        Case{targets, "-s 3 -g 0.5", "Mean squared error = "}}) {
    workspace.write("data", fileText(samples));
    const std::string text =
        succeed(workspace, words("zelsvm-train -q -v 6 -R 7 " + options + " data"));
    const auto expected =
        byHand(workspace, samples, foldsOf(samples.rows(), 6, 7), options, report);
    const auto measured = foldMeasures(text);
    ASSERT_EQ(measured.size(), 6u);
    // Model files hold six digits of each number.
    for (std::size_t f = 0; f < 6; ++f)
      EXPECT_NEAR(measured[f], expected[f], 1e-4 * (1 + expected[f])) << options << " fold " << f;
  }
}

TEST(CrossValidation, ReportsWithoutWritingAModel) {
  const std::string number = "[0-9.e+-]+";
  const Workspace workspace;
  workspace.write("data", fileText(zeltest::classSamples(60, 3, {1, 2}, 1)));
  for (const char* options : {"-q", "-s 1 -n 0.2", "-s 2", "-X -x -1:1"}) {
    const std::string text =
        succeed(workspace, words(std::string("zelsvm-train -v 3 -R 1 ") + options + " data model"));
    EXPECT_TRUE(zeltest::matches(text.substr(text.find("\nResult")),
                                 "\nResult of 3-fold cross-validation:\n  Accuracy = " + number +
                                     "%\nIndividual training accuracy:\n  (" + number + "% ){3}"));
  }
  workspace.write("data", fileText(zeltest::targetSamples(60, 3, 1)));
  const std::string text = succeed(workspace, words("zelsvm-train -q -v 3 -R 1 -s 3 data model"));
  EXPECT_TRUE(zeltest::matches(
      text.substr(text.find("\nResult")),
      "\nResult of 3-fold cross-validation:\n  Mean squared error = " + number +
          "\n  Pearson correlation coefficient = " + number +
          "\nMean squared errors of individual training:\n  (" + number + " ){3}"));
  EXPECT_EQ(workspace.files(), std::vector<std::string>{"data"});
}

TEST(CrossValidation, ErrorsAreInUnitsOfTheFile) {
  const Workspace workspace;
  Samples samples = zeltest::targetSamples(60, 3, 1);
  workspace.write("data", fileText(samples));
  for (double& target : samples.labels) target = 100 * target;
  workspace.write("wide", fileText(samples));
  const auto errors = [&](const char* data) {
    return foldMeasures(succeed(
        workspace, words(std::string("zelsvm-train -q -v 4 -R 3 -s 4 -y -1:1 -e 1e-6 ") + data)));
  };
  const auto narrow = errors("data");
  const auto wide = errors("wide");
  for (std::size_t f = 0; f < 4; ++f) EXPECT_NEAR(wide[f], 1e4 * narrow[f], 10 * narrow[f]);
}

TEST(CrossValidation, SmallAndManyFolds) {
  const Workspace workspace;
  const auto accuracies = [&](const std::string& folds, const std::string& data) {
    workspace.write("data", data);
    return foldMeasures(succeed(workspace, words("zelsvm-train -q -R 1 -v " + folds + " data")));
  };
  const std::string apart = "1 1:1\n1 1:1.5\n1 1:2\n2 1:-1\n2 1:-1.5\n2 1:-2\n";
  EXPECT_EQ(accuracies("6", apart), std::vector<double>(6, 100));
  auto sparse = std::vector<double>(6, 100);
  sparse.resize(11);  // empty folds are left out
  EXPECT_EQ(accuracies("11", apart), sparse);
  // A part with one label predicts it; with one sample, its label; with none, 0.
  auto lone = accuracies("3", "5 1:1\n5 1:1\n7 1:3\n");
  std::sort(lone.begin(), lone.end());
  EXPECT_EQ(lone, (std::vector<double>{0, 100, 100}));
  EXPECT_EQ(accuracies("2", "5 1:1\n5 1:2\n"), (std::vector<double>{100, 100}));
  EXPECT_EQ(accuracies("2", "5 1:1\n"), (std::vector<double>{0, 0}));
  workspace.write("data", "1.5 1:1\n2 1:2\n");
  refuse(workspace, words("zelsvm-train -q -v 2 data"),
         "Only integer values are supported for classification.");
}

// Folds without samples cost nothing but their place in the report.
TEST(CrossValidation, AMillionFolds) {
  const Workspace workspace;
  workspace.write("data", "1 1:1\n1 1:2\n2 1:-1\n2 1:-2\n");
  auto expected = std::vector<double>(1000000, 0);
  std::fill_n(expected.begin(), 4, 100);
  EXPECT_TRUE(foldMeasures(succeed(workspace, words("zelsvm-train -q -R 1 -v 1000000 data"),
                                   {.limit = std::chrono::seconds{20}})) == expected);
}

TEST(TestTool, MeasuresWithoutReporting) {
  const Workspace workspace;
  workspace.write("data", fileText(zeltest::classSamples(40, 3, {1, 2, 3}, 1)));
  for (const char* options :
       {"-R 7", "-R 7 -v 3", "-s 3 -y 0:1 data", "-M 3 -N 20000 -R 2", "-M 9 -N 9 -T -R 1",
        "-L 5 data", "data", "-q -x 0:1 -v 4 data", "-s 4 -v 3 data"}) {
    const std::string text = succeed(workspace, words(std::string("zelsvm-test ") + options));
    EXPECT_TRUE(zeltest::matches(text,
                                 "([^\n]+ GPU\n\n)?(\n|[.*]+\n?|[FC][^\n]+\n|nu = [^\n]+\n|obj = "
                                 "[^\n]+\n|epsilon = [^\n]+\n|nSV = [^\n]+\n)*"))
        << options << '\n'
        << text;
    EXPECT_EQ(text.find("Accuracy"), std::string::npos);
  }
  EXPECT_EQ(workspace.files(), std::vector<std::string>{"data"});
  refuse(workspace, words("zelsvm-test -q -M 0"), "Invalid zero data dimensions.");
  refuse(workspace, words("zelsvm-test -q nowhere"), "failed to open nowhere.");
}

}  // namespace
