// Numbers that overflow, vanish or tie: every run ends with a finite model or with one sentence.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

using zeltest::matches;
using zeltest::refuse;
using zeltest::succeed;
using zeltest::ToolResult;
using zeltest::words;
using zeltest::Workspace;

// Ten samples of two features; value gives the text of feature j of sample i.
template <typename Label, typename Value>
std::string rows(const Label& label, const Value& value) {
  std::ostringstream text;
  for (int i = 0; i < 10; ++i)
    text << label(i) << " 1:" << value(i, 0) << " 2:" << value(i, 1) << '\n';
  return text.str();
}

int side(int i) { return i % 2 == 0 ? 1 : -1; }
int ramp(int i, int j) { return i * 3 + j; }
std::string withUnit(int i, int j, const char* exponent) {
  return std::to_string((i * 7 + j * 5) % 11 - 5) + exponent;
}

const std::pair<const char*, std::string> inputs[] = {
    {"features of 1e308", rows(side, [](int i, int j) { return withUnit(i, j, "e307"); })},
    {"features of 1e154", rows(side, [](int i, int j) { return withUnit(i, j, "e153"); })},
    {"features of 1e10", rows(side, [](int i, int j) { return withUnit(i, j, "e10"); })},
    {"denormal features", rows(side, [](int i, int j) { return withUnit(i, j, "e-321"); })},
    {"tiny features", rows(side, [](int i, int j) { return withUnit(i, j, "e-160"); })},
    {"equal samples", rows(side, [](int, int) { return 2.5; })},
    {"zero features", rows(side, [](int, int) { return 0; })},
    {"one other label", rows([](int i) { return i == 0 ? 1 : -1; }, ramp)},
    {"one label", rows([](int) { return 4; }, ramp)},
    {"targets of 1e308", rows([](int i) { return i % 3 == 0 ? "1e308" : "-1e308"; }, ramp)},
    {"one sample", "1 1:2\n"},
    {"one feature", "1 1:2\n-1 1:3\n1 1:2.5\n"}};

// The one sentence of a tool that stopped, behind what the solver printed.
constexpr const char* refusal =
    "[.*]*(\n(Finished|Failed to reach) optimization in [0-9]+ iterations\n\n\n|[.*])*"
    "[A-Z][^\n]*\n";

bool holdsOtherNumbers(const std::string& text) {
  return matches(text, "(.*[^a-zA-Z])?-?(nan|inf)([^a-zA-Z].*)?");
}

// Either a file of finite numbers, or a sentence and no file.
void expectSoundEnd(const Workspace& workspace, const std::string& command,
                    const std::string& output) {
  SCOPED_TRACE(command);
  std::filesystem::remove(workspace.folder() / output);
  const auto arguments = words(command);
  const ToolResult result = workspace.run(arguments[0], {arguments.begin() + 1, arguments.end()},
                                          {.limit = std::chrono::seconds{20}});
  ASSERT_FALSE(result.timedOut);
  if (result.status == 0) {
    EXPECT_FALSE(holdsOtherNumbers(workspace.read(output))) << workspace.read(output);
    return;
  }
  EXPECT_EQ(result.status, 1) << testing::PrintToString(result);
  EXPECT_TRUE(matches(zeltest::afterBanner(result, arguments[0]), refusal)) << result.out;
  EXPECT_FALSE(std::filesystem::exists(workspace.folder() / output));
}

// So many that every input meets each of them with some type and kernel.
const std::string settings[] = {"",         "-d 50 -g 10", "-x 0:1",
                                "-c 1e300", "-c 1e-300",   "-g 1e300",
                                "-n 1",     "-e 1e300",    "-x -1e308:1e308"};

class HardNumbers : public testing::TestWithParam<std::size_t> {};

TEST_P(HardNumbers, EndWithAFiniteModelOrASentence) {
  const auto& [name, text] = inputs[GetParam()];
  SCOPED_TRACE(name);
  const Workspace workspace;
  workspace.write("data", text);
  std::size_t run = GetParam();
  for (const char* type : {"0", "1", "2", "3", "4"})
    for (const char* kernel : {"0", "1", "2", "3"}) {
      const std::string& options = settings[run++ % std::size(settings)];
      expectSoundEnd(workspace,
                     std::string("zelsvm-train -q -L 1000 -s ") + type + " -t " + kernel +
                         (options.empty() ? "" : " ") + options + " data model",
                     "model");
      if (std::filesystem::exists(workspace.folder() / "model"))
        expectSoundEnd(workspace, "zelsvm-predict -q data model out", "out");
    }
}
INSTANTIATE_TEST_SUITE_P(Inputs, HardNumbers, testing::Range(std::size_t{0}, std::size(inputs)));

TEST(NoNumbers, AreRefusedWhereTheyMatter) {
  const Workspace workspace;
  workspace.write("data", rows(side, ramp));
  for (const char* value : {"inf", "-inf", "nan"}) {
    workspace.write("features", std::string("1 1:1\n\n1 1:") + value + "\n-1 1:3\n");
    workspace.write("targets", std::string("1 1:1\n-1 1:2\n") + value + " 1:3\n");
    for (const char* options : {"-s 0", "-s 1 -X", "-s 2 -t 0", "-s 3", "-v 2"})
      refuse(workspace, words(std::string("zelsvm-train -q ") + options + " features result"),
             "The features of sample 2 are not finite numbers.");
    for (const char* options : {"-s 3", "-s 4 -X"})
      refuse(workspace, words(std::string("zelsvm-train -q ") + options + " targets result"),
             "The target of sample 3 is not a finite number.");
    succeed(workspace, words("zelsvm-train -q -s 2 targets model"));  // which sees no targets
  }
  for (const char* type : {"0", "3"}) {
    succeed(workspace, words(std::string("zelsvm-train -q -s ") + type + " data model"));
    workspace.write("features", "1 1:1\n-1 1:nan 2:1\n");
    refuse(workspace, words("zelsvm-predict -q features model out"),
           "The decision value of sample 2 is not a number.");
  }
}

// Rounding keeps the gap above such a tolerance: the run has no other end than to notice.
TEST(Tolerances, BelowRoundingEndTheRun) {
  const Workspace workspace;
  workspace.write("data", rows(side, ramp));
  for (const char* options : {"-s 0 -t 0", "-s 0", "-s 1", "-s 2", "-s 3", "-s 4"}) {
    const auto report = succeed(
        workspace, words(std::string("zelsvm-train -q -e 1e-300 ") + options + " data model"));
    EXPECT_TRUE(
        matches(report, "[.]*\n(Finished|Failed to reach) optimization in [0-9]+ iterations\n+"));
    succeed(workspace, words("zelsvm-predict -q data model out"));
  }
}

// The optimum lies further away than steps of such size ever get, or rounding makes them noise.
TEST(UnscaledFeatures, EndTheRun) {
  const Workspace workspace;
  workspace.write("data", rows(side, [](int i, int j) { return withUnit(i, j, "e8"); }));
  for (const char* type : {"0", "1", "3"})
    EXPECT_TRUE(
        matches(succeed(workspace, {"zelsvm-train", "-q", "-t", "0", "-s", type, "data", "model"},
                        {.limit = std::chrono::seconds{20}}),
                "[.]*\nFailed to reach optimization in [0-9]+ iterations\n+"));
}

// Nothing is written before the training is over, which here takes hours.
TEST(InterruptedTraining, LeavesNoModel) {
  const Workspace workspace;
  workspace.write("data", rows(side, [](int i, int j) { return withUnit(i, j, "e4"); }));
  for (const char* signal : {"KILL", "TERM", "INT"}) {
    const ToolResult result = workspace.run(
        "/usr/bin/timeout",
        {"-s", signal, "0.3", std::string(ZEL_TOOL_DIR) + "/zelsvm-train", "-t", "0", "data"});
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.status, 0);
    EXPECT_EQ(workspace.files(), std::vector<std::string>{"data"});
  }
}

}  // namespace
