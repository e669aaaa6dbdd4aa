// What every tool does before its work begins, seen from outside.
#include <gtest/gtest.h>

#include <csignal>
#include <sstream>
#include <tuple>

#include "support/programs/tool_runs.h"
#include "text_match.h"
#include "tools/tool.h"
#include "tools/usage.h"

namespace {

using zelsvm_opt::Tool;
using zeltest::afterBanner;
using zeltest::ToolResult;
using zeltest::Workspace;

// The harness itself.
TEST(ToolProcess, NoticesSignalsAndTheTimeLimit) {
  EXPECT_EQ(Workspace().run("/bin/sh", {"-c", "kill -SEGV $$"}).signal, SIGSEGV);
  EXPECT_TRUE(Workspace().run("/bin/sleep", {"60"}, {.limit = std::chrono::seconds{0}}).timedOut);
}

void expectQuietSuccess(const ToolResult& result) {
  EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
  EXPECT_EQ(result.err, "");
}

TEST(Startup, TooFewFileNamesPrintTheUsage) {
  const std::tuple<const char*, Tool, std::vector<std::string>> runs[] = {
      {"zelsvm-train", Tool::train, {"-h", "-q"}},
      {"zelsvm-predict", Tool::predict, {"-q", "test", "model"}},
      {"zelsvm-scale", Tool::scale, {"-q"}}};
  for (const auto& [name, tool, arguments] : runs) {
    const Workspace workspace;
    const ToolResult result = workspace.run(name, arguments);
    expectQuietSuccess(result);
    EXPECT_EQ(afterBanner(result, name), zelsvm_opt::usageText(tool)) << name;
    EXPECT_EQ(workspace.files(), std::vector<std::string>{});
  }
}

TEST(Startup, DeviceLineUnlessQuiet) {
  const ToolResult result = Workspace().run("zelsvm-train");
  expectQuietSuccess(result);
  const std::string text = afterBanner(result, "zelsvm-train");
  EXPECT_TRUE(zeltest::matches(text, "[^\n]+ GPU\n\nUsage: .*")) << text;
}

TEST(Startup, OtherProgramNamesAreNoTool) {
  for (const char* const name : {"other", "zelsvm-train.exe.bak"}) {
    const Workspace workspace;
    workspace.copyProgram(name);
    const ToolResult result = workspace.run(std::string("./") + name, {"missing-file", "-q"});
    EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
    EXPECT_EQ(result.err,
              "This program is a tool under one of these names: zelsvm-train, zelsvm-predict, "
              "zelsvm-scale, zelsvm-test.\n");
    const std::string text = afterBanner(result, "zelsvm");
    EXPECT_TRUE(zeltest::matches(text, "[^\n]+ GPU\n\n")) << text;
    EXPECT_EQ(workspace.files(), std::vector<std::string>{name});
  }
}

TEST(Startup, MissingDeviceIsTheRuntimesError) {
  const ToolResult result = Workspace().run("zelsvm-train", {"-G", "1", "data"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "");
  const std::string text = afterBanner(result, "zelsvm-train");
  EXPECT_TRUE(zeltest::matches(text,
                               "tools/[a-z_]+\\([0-9]+\\): zelSafeCall: "
                               "CUDA runtime error - invalid device ordinal\\.\n\n"))
      << text;
}

TEST(Startup, PlatformChoice) {
  const auto runOn = [](const std::string& platform) {
    return Workspace().run("zelsvm-scale", {"-q"},
                           {.environment = {{"ZELSVM_PLATFORM", platform}}});
  };
  expectQuietSuccess(runOn("host"));
  expectQuietSuccess(runOn(""));
  const ToolResult unknown = runOn("gpu");
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.out, "ZELSVM_PLATFORM must be host or cuda, not gpu.\n");
}

// The graphics driver looks for one name; nothing else of ours may meet another engine's symbols.
TEST(Startup, ExportsOneSymbol) {
  const ToolResult result =
      Workspace().run(ZEL_NM, {"-D", "-P", "--defined-only", ZEL_TOOL_DIR "/zelsvm"});
  ASSERT_EQ(result.status, 0) << testing::PrintToString(result);
  std::istringstream lines(result.out);
  std::vector<std::string> names;
  for (std::string line; std::getline(lines, line);) {
    const std::string name = line.substr(0, line.find(' '));
    // Versioned names belong to the C and C++ libraries, these prefixes to the sanitizers.
    if (name.find('@') == std::string::npos && !name.starts_with("__asan_") &&
        !name.starts_with("__ubsan_"))
      names.push_back(name);
  }
  EXPECT_EQ(names, std::vector<std::string>{"NvOptimusEnablementCuda"});
}

}  // namespace
