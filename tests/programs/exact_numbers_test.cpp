// Labels, bounds and targets whose six digits are not enough, on every way from tool to tool.
#include <gtest/gtest.h>

#include <array>
#include <sstream>

#include "support/programs/tool_runs.h"

namespace {

using zeltest::numbersIn;
using zeltest::restOfLine;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

constexpr std::array<const char*, 4> labels = {"-9007199254740991", "20261123", "20261124",
                                               "9007199254740992"};

// Four groups of samples, apart from each other.
std::string groups() {
  std::ostringstream text;
  for (unsigned i = 0; i < 60; ++i)
    text << labels[i % 4] << " 1:" << i % 4 * 3 + i % 7 * 0.1 << " 2:" << i % 5 * 0.2 + 0.1 << '\n';
  return text.str();
}

std::string firstWords(const std::string& text) {
  std::istringstream lines(text);
  std::string firsts;
  for (std::string line; std::getline(lines, line);) firsts += line.substr(0, line.find(' ')) + ' ';
  return firsts;
}

TEST(LongLabels, AreKeptByEveryTool) {
  const Workspace workspace;
  workspace.write("data", groups());
  std::string named;
  for (const char* label : labels) named += std::string(label) + " ";
  for (const std::string options : {"", "-b 1 ", "-s 1 -n 0.1 "}) {
    succeed(workspace, words("zelsvm-train -q -R 1 " + options + "data model"));
    EXPECT_EQ(restOfLine(workspace.read("model"), "Labels: ") + " ", named);
    const bool probability = options == "-b 1 ";
    const std::string predict = probability ? "zelsvm-predict -b 1" : "zelsvm-predict";
    const std::string text = succeed(workspace, words(predict + " data model out"));
    EXPECT_EQ(restOfLine(text, "Accuracy = "), "100%");
    const std::string out = workspace.read("out");
    EXPECT_EQ(firstWords(out), (probability ? "labels: " : "") + firstWords(groups()));
    if (probability) {
      EXPECT_EQ(restOfLine(out, "labels: "), named);
    }
  }
  EXPECT_EQ(restOfLine(succeed(workspace, words("zelsvm-train -q -v 5 -R 1 data")), "Accuracy = "),
            "100%");
  succeed(workspace, words("zelsvm-scale -q data scaled"));
  EXPECT_EQ(firstWords(workspace.read("scaled")), firstWords(groups()));
}

TEST(LongLabels, HaveWeightsOfTheirOwn) {
  const Workspace workspace;
  workspace.write("data", "20261123 1:1\n20261124 1:1\n20261123 1:2\n20261124 1:2\n");
  for (const char* label : {"20261123", "20261124"}) {
    succeed(workspace, {"zelsvm-train", "-q", "-w", std::string(label) + ":9", "data", "model"});
    succeed(workspace, words("zelsvm-predict -q data model out"));
    EXPECT_EQ(workspace.read("out"),
              std::string(label) + " \n" + label + " \n" + label + " \n" + label + " \n");
  }
}

// One feature, far away from 0: the halves have a label each, or the feature is the target.
std::string farAway(bool regression) {
  std::ostringstream text;
  text.precision(17);
  for (int i = 0; i < 80; ++i) {
    const double x = 1700000001 + (i * 37 % 80) * 4.875;
    if (regression)
      text << x << " 1:" << x << '\n';
    else
      text << (x < 1700000195 ? 1 : 2) << " 1:" << x << '\n';
  }
  return text.str();
}

TEST(DistantBounds, GiveTheScalingOfTraining) {
  const Workspace workspace;
  workspace.write("data", farAway(false));
  for (const char* range : {"-1:1", "1:2"}) {
    succeed(workspace, {"zelsvm-train", "-q", "-x", range, "-g", "9", "data", "model"});
    EXPECT_NE(workspace.read("model").find("\n  0: 1700000001 1700000386.125\n"),
              std::string::npos);
    const std::string text = succeed(workspace, words("zelsvm-predict data model out"));
    EXPECT_EQ(restOfLine(text, "Accuracy = "), "100%");
    succeed(workspace, {"zelsvm-scale", "-q", "-x", range, "-s", "range", "data", "first"});
    succeed(workspace, words("zelsvm-scale -q -r range data second"));
    EXPECT_EQ(workspace.read("first"), workspace.read("second"));
  }
}

TEST(DistantTargets, ComeBackFromTheirScaling) {
  const Workspace workspace;
  workspace.write("data", farAway(true));
  succeed(workspace, words("zelsvm-train -q -s 3 -t 0 -p 0.001 -c 100 -x -1:1 -y -1:1 data model"));
  const std::string text = succeed(workspace, words("zelsvm-predict data model out"));
  EXPECT_LT(numbersIn(restOfLine(text, "Mean squared error = ")).at(0), 1);
  std::istringstream targets(workspace.read("data"));
  std::istringstream predictions(workspace.read("out"));
  std::string line;
  for (double target = 0, prediction = 0; targets >> target && std::getline(targets, line);) {
    predictions >> prediction;
    EXPECT_NEAR(prediction, target, 1) << line;
  }
  succeed(workspace, words("zelsvm-scale -q -y 0:1 -s range data first"));
  succeed(workspace, words("zelsvm-scale -q -r range data second"));
  EXPECT_EQ(workspace.read("first"), workspace.read("second"));
  succeed(workspace, words("zelsvm-scale -q data kept"));
  EXPECT_EQ(firstWords(workspace.read("kept")), firstWords(workspace.read("data")));
  // An interval far away keeps its ends and what lies between them apart, too.
  succeed(workspace, words("zelsvm-scale -q -y 20000001:20000002 -s range data first"));
  EXPECT_EQ(restOfLine(workspace.read("range"), "Y-scale: "), "20000001 20000002");
}

// Numbers that six digits are enough for keep that form.
TEST(OrdinaryNumbers, HaveSixDigits) {
  const Workspace workspace;
  workspace.write("data", "1e7 1:1234567.8 2:0.12345678\n1000001 1:0 2:0.98765432\n");
  succeed(workspace, words("zelsvm-scale -q -y 0:3 -s range data scaled"));
  EXPECT_EQ(workspace.read("range"),
            "X-scale: -1 1\n  0: 0 1.23457e+06\n  1: 0.123457 0.987654\nY-scale: 0 3\n"
            "  1e+06 1e+07\n");
  succeed(workspace, words("zelsvm-train -q -x -1:1 data model"));
  EXPECT_EQ(restOfLine(workspace.read("model"), "Labels: "), "1000001 1e+07");
  EXPECT_NE(workspace.read("model").find("\n  0: 0 1.23457e+06\n  1: 0.123457 0.987654\n"),
            std::string::npos);
  workspace.write("data", "0.1234567 1:1\n0.7654321 1:2\n0.7 1:3\n");
  for (const char* scaling : {"", "-y 0:1 "}) {
    succeed(workspace, words(std::string("zelsvm-train -q -s 3 ") + scaling + "data model"));
    succeed(workspace, words("zelsvm-predict -q data model out"));
    std::istringstream lines(workspace.read("out"));
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 9u) << line;
  }
}

}  // namespace
