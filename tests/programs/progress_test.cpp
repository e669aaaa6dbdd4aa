// Long training in front of a terminal.
#include <gtest/gtest.h>

#include <future>
#include <random>

#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

using zeltest::RunSettings;
using zeltest::ToolResult;
using zeltest::Workspace;

// Labels by chance, which take long to separate.
std::string hardData() {
  zeltest::Samples samples = zeltest::classSamples(3000, 10, {1, 2}, 1);
  std::mt19937 generator(2);
  for (double& label : samples.labels) label = generator() % 2 == 0 ? 1 : 2;
  return fileText(samples);
}

TEST(Progress, IsShownAfterTwoSecondsUnlessTurnedOff) {
  const std::string data = hardData();
  const auto watch = [&data](const std::string& options, const std::string& progress) {
    const Workspace workspace;
    workspace.write("data", data);
    RunSettings settings{
        .environment = {{"ZELSVM_PROGRESS", progress}, {"TERM", "xterm"}, {"OMP_NUM_THREADS", "1"}},
        .terminal = true,
        .limit = std::chrono::seconds(4)};
    return workspace.run("zelsvm-train", zeltest::words("-c 1e7 -e 1e-6" + options + " data model"),
                         settings);
  };
  auto quiet = std::async(std::launch::async, watch, " -q", "");
  auto off = std::async(std::launch::async, watch, "", "off");
  const ToolResult shown = watch("", "");
  EXPECT_TRUE(shown.timedOut) << "the problem is too easy: " << testing::PrintToString(shown);
  EXPECT_TRUE(zeltest::matches(shown.err,
                               "(\r[2-4] s, [0-9]+ iterations, gap [0-9.e+]+ \\(ends at 1e-06\\), "
                               "[0-9.e+]+ kernel values, [0-9]+ SV\033\\[K)+"))
      << testing::PrintToString(shown.err);
  EXPECT_EQ(shown.out.find("SV"), std::string::npos);
  EXPECT_EQ(quiet.get().err, "");
  EXPECT_EQ(off.get().err, "");
}

}  // namespace
