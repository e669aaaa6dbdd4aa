// The five formulations and several labels, from the data file to the predictions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

using zeltest::classSamples;
using zeltest::fileText;
using zeltest::matches;
using zeltest::numbersIn;
using zeltest::restOfLine;
using zeltest::Samples;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

const std::string number = "-?[0-9.]+(e[-+][0-9]+)?";

TEST(Formulations, ReportLines) {
  const struct {
    const char *options, *firstLine, *name;
  } cases[] = {{"-s 0", "nu", "smo-C-classification"},
               {"-s 0 -w 1:2", "", "smo-C-classification"},
               {"-s 1 -n 0.3", "C", "smo-nu-classification"},
               {"-s 2 -n 0.3", "", "smo-one-class"},
               {"-s 3", "nu", "smo-epsilon-regression"},
               {"-s 4 -n 0.3", "epsilon", "smo-nu-regression"}};
  const Workspace workspace;
  workspace.write("data", fileText(classSamples(80, 3, {1, -1}, 1)));
  for (const auto& c : cases) {
    const std::string line = c.firstLine;
    const std::string first = line.empty() ? "" : line + " = " + number + "\n";
    const std::string text =
        succeed(workspace, words("zelsvm-train " + std::string(c.options) + " data model"));
    EXPECT_TRUE(matches(text,
                        "[^\n]+ GPU\n\n[.]+\nFinished optimization in [0-9]+ iterations"
                        "\n\n\n" +
                            first + "obj = " + number + ", rho = " + number +
                            "\nnSV = [0-9]+, nBSV = [0-9]+\nTotal nSV = [0-9]+\n"))
        << text;
    const std::string model = workspace.read("model");
    EXPECT_EQ(restOfLine(model, "SvmType: "), c.name);
    EXPECT_EQ(restOfLine(model, "Rho: "), restOfLine(text, ", rho = "));
    EXPECT_EQ(restOfLine(model, "TotalSV: "), restOfLine(text, "Total nSV = "));
    EXPECT_EQ(std::to_string(zeltest::vectorLines(model).size()), restOfLine(text, "Total nSV = "));
  }
}

TEST(Formulations, OneClassLeavesAboutNuOutside) {
  const Workspace workspace;
  Samples samples = classSamples(400, 3, {1, 2}, 1);
  std::fill(samples.labels.begin(), samples.labels.end(), 1);
  workspace.write("data", fileText(samples));
  for (const double nu : {0.05, 0.2}) {
    succeed(workspace, words("zelsvm-train -s 2 -n " + std::to_string(nu) + " data model"));
    const std::string text = succeed(workspace, words("zelsvm-predict data model out"));
    EXPECT_NEAR(numbersIn(restOfLine(text, "Accuracy = ")).at(0), 100 * (1 - nu), 2);
    const auto predictions = numbersIn(workspace.read("out"));
    EXPECT_NEAR(static_cast<double>(std::count(predictions.begin(), predictions.end(), -1)),
                400 * nu, 8);
  }
}

double squaredError(const std::vector<double>& a, const std::vector<double>& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
  return sum / static_cast<double>(a.size());
}

TEST(Formulations, RegressionReportsUnscaledErrors) {
  const Workspace workspace;
  Samples samples = zeltest::targetSamples(150, 2, 1);
  for (double& target : samples.labels) target = std::round(1000 * target) / 10 + 300;
  workspace.write("data", fileText(samples));
  for (const char* type : {"-s 3 -p 0.01", "-s 4 -n 0.5"}) {
    succeed(workspace,
            words(std::string("zelsvm-train -x 0:1 -y -1:1 -c 10 -g 2 ") + type + " data model"));
    const std::string text = succeed(workspace, words("zelsvm-predict data model out"));
    EXPECT_TRUE(matches(text, "[^\n]+ GPU\n\n\\.\nMean squared error = " + number +
                                  "\nPearson correlation coefficient = " + number + "\n"))
        << text;
    const auto predictions = numbersIn(workspace.read("out"));
    ASSERT_EQ(predictions.size(), samples.rows());
    const double error = numbersIn(restOfLine(text, "error = ")).at(0);
    EXPECT_NEAR(error, squaredError(predictions, samples.labels), 1e-4 * error);
    EXPECT_GE(numbersIn(restOfLine(text, "coefficient = ")).at(0), 0.9) << type;
  }
}

TEST(ManyLabels, ExtremeLabels) {
  const Workspace workspace;
  workspace.write("data", "9e18 1:1\n-0 1:2\n0 1:3\n-9e18 1:4\n");
  succeed(workspace, words("zelsvm-train -c 100 -g 1 data model"));
  EXPECT_EQ(restOfLine(workspace.read("model"), "Labels: "), "-9e+18 0 9e+18");
  succeed(workspace, words("zelsvm-predict data model out"));
  EXPECT_EQ(workspace.read("out"), "9e+18 \n0 \n0 \n-9e+18 \n");
}

}  // namespace
