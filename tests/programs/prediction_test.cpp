// The prediction tool: its files, test sets of other widths, and what it refuses.
#include <gtest/gtest.h>

#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

using zeltest::fileText;
using zeltest::numbersIn;
using zeltest::refuse;
using zeltest::restOfLine;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

TEST(Prediction, FileAndReportAgree) {
  const Workspace workspace;
  const auto samples = zeltest::classSamples(200, 3, {1, 12}, 1);
  workspace.write("data", fileText(samples));
  succeed(workspace, words("zelsvm-train -q data model"));
  const std::string text = succeed(workspace, words("zelsvm-predict data model out"));
  const std::string out = workspace.read("out");
  EXPECT_TRUE(zeltest::matches(out, "((1|12) \n){200}"));
  const auto predictions = numbersIn(out);
  double correct = 0;
  for (std::size_t i = 0; i < predictions.size(); ++i)
    correct += predictions[i] == samples.labels[i];
  EXPECT_EQ(numbersIn(restOfLine(text, "Accuracy = ")).at(0), correct / 2);
  EXPECT_LT(correct, 200);
}

class PredictionWidths : public testing::TestWithParam<const char*> {
 protected:
  PredictionWidths() {
    // Rows of nothing but 0 would be left out of a model that is read again.
    const std::string_view zeros = " 1:0\n";
    std::string data = fileText(zeltest::targetSamples(50, 3, 1));
    for (auto at = data.find(zeros); at != std::string::npos; at = data.find(zeros, at))
      data.replace(at, zeros.size(), " 1:0 2:1\n");
    workspace.write("data", data);
    workspace.write("padded", "0 1:1 5:0\n" + data);
    workspace.write("plain", "0 1:1 3:0\n" + data);
  }

  // The predictions for the lines of the test set.
  std::vector<double> predict(const std::string& test, const std::string& model) {
    workspace.write("test", test);
    succeed(workspace,
            words(std::string("zelsvm-predict -q") + GetParam() + " test " + model + " out"));
    return numbersIn(workspace.read("out"));
  }

  void train(const std::string& options, const std::string& data) {
    succeed(workspace, words(std::string("zelsvm-train -q -s 3") + GetParam() + ' ' + options +
                             ' ' + data + " model-" + data));
  }

  Workspace workspace;
};

TEST_P(PredictionWidths, FeaturesThatTheTestSetLacksAreZero) {
  for (const char* kernel : {"-t 0", "-t 2 -g 0.5", "-t 1 -r 1"}) {
    train(std::string("-x 1:3 -y 0:9 ") + kernel, "data");
    const auto narrow = predict("1 1:0.5\n2 1:-0.25\n", "model-data");
    const auto full = predict("1 1:0.5 2:0 3:0\n2 1:-0.25 2:0 3:0\n", "model-data");
    EXPECT_EQ(narrow, full) << kernel;
    EXPECT_NE(narrow, predict("1 1:0.5 2:1\n2 1:-0.25 2:1\n", "model-data"));
  }
}

TEST_P(PredictionWidths, FeaturesThatTheModelLacksAreZeroThere) {
  const std::string test = "1 1:0.5 4:0.5\n2 2:1 3:0.25 4:-1 5:2\n";
  for (const char* kernel : {"-t 0 -e 1e-7", "-t 2 -g 0.5 -e 1e-7"}) {
    train(kernel, "plain");
    train(kernel, "padded");
    zeltest::expectNear(predict(test, "model-plain"), predict(test, "model-padded"), 1e-4);
  }
}

INSTANTIATE_TEST_SUITE_P(Rows, PredictionWidths, testing::Values("", " -X"),
                         [](const auto& rows) { return *rows.param == 0 ? "Sparse" : "Dense"; });

TEST(Prediction, IndexBaseShiftsFilesOnly) {
  const Workspace workspace;
  workspace.write("one", "3 1:1\n1 2:1\n-1 1:-1 3:2\n2 1:2\n");
  workspace.write("zero", "3 0:1\n1 1:1\n-1 0:-1 2:2\n2 0:2\n");
  succeed(workspace, words("zelsvm-train -q -s 3 -x 0:1 one model-one"));
  succeed(workspace, words("zelsvm-train -q -s 3 -x 0:1 -I 0 zero model-zero"));
  EXPECT_NE(workspace.read("model-zero"), workspace.read("model-one"));
  succeed(workspace, words("zelsvm-predict -q one model-one out-one"));
  succeed(workspace, words("zelsvm-predict -q -I 0 zero model-zero out-zero"));
  EXPECT_EQ(workspace.read("out-one"), workspace.read("out-zero"));
  refuse(workspace, words("zelsvm-predict -q zero model-zero out"),
         "Base index underflow detected in sparse data");
}

TEST(Prediction, ProbabilitiesAreRefused) {
  const Workspace workspace;
  workspace.write("data", "1 1:1\n-1 1:2\n1 1:3\n");
  for (const char* type : {"-s 0", "-s 3"}) {
    succeed(workspace, words(std::string("zelsvm-train -q ") + type + " data model"));
    refuse(workspace, words("zelsvm-predict -q -b 1 data model out"),
           "The model does not contain probability parameters.");
  }
  succeed(workspace, words("zelsvm-train -q -s 2 data model"));
  refuse(workspace, words("zelsvm-predict -q -b 1 data model out"),
         "Probability output for one-class SVM is not supported.");
}

}  // namespace
