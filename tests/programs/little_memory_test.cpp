// Runs that may have little memory or no threads: each ends with the result or with one sentence.
// In the last amount of memory, some fourteen times the file, there is room for all of them.
#include <gtest/gtest.h>

#include <filesystem>

#include "base/random.h"
#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

using zeltest::afterBanner;
using zeltest::Command;
using zeltest::matches;
using zeltest::succeed;
using zeltest::ToolResult;
using zeltest::words;
using zeltest::Workspace;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool limitsWork = false;
#else
constexpr bool limitsWork = true;
#endif

// Stacks and work memory depend on the number of threads.
const zeltest::RunSettings twoThreads{.environment = {{"OMP_NUM_THREADS", "2"}},
                                      .limit = std::chrono::seconds{20}};

// Runs the command in a shell that set limits before.
ToolResult runLimited(const Workspace& workspace, const std::string& limits,
                      const Command& command) {
  Command shell = {"-c", limits + " && exec \"$0\" \"$@\"", ZEL_TOOL_DIR "/" + command[0]};
  shell.insert(shell.end(), command.begin() + 1, command.end());
  return workspace.run("/bin/sh", shell, twoThreads);
}

class LittleMemory : public testing::Test {
 protected:
  void SetUp() override {
    if (!limitsWork) GTEST_SKIP() << "The sanitizer maps more than any limit.";
    workspace.write("data", zeltest::fileText(zeltest::classSamples(1600, 400, {1, 2, 3}, 1)));
    succeed(workspace, words("zelsvm-train -q -L 1 data model"), twoThreads);
  }

  Workspace workspace;
};

// Behind the pairs of labels that were solved before.
constexpr const char* refusal =
    "([.]*\n(Finished|Failed to reach) optimization in [0-9]+ iterations\n\n\n)*"
    "[.]*[^\n]*memory[^\n]*\n+";

TEST_F(LittleMemory, EndsWithTheSameResultOrASentence) {
  for (const char* text :
       {"zelsvm-scale -q data out", "zelsvm-predict -q data model out",
        "zelsvm-train -q -X -L 1 data out", "zelsvm-train -q -X -s 4 -L 1 -m 1 data out"}) {
    const Command command = words(text);
    succeed(workspace, command, twoThreads);
    const std::string expected = workspace.read("out");
    int refused = 0;
    for (const int megabytes : {20, 26, 32, 38, 44, 56, 100}) {
      SCOPED_TRACE(testing::Message() << text << " in " << megabytes << " MB");
      std::filesystem::remove(workspace.folder() / "out");
      const auto files = workspace.files();
      const ToolResult result =
          runLimited(workspace, "ulimit -v " + std::to_string(megabytes * 1000), command);
      ASSERT_TRUE(result.status == 0 || (result.status == 1 && megabytes < 100))
          << testing::PrintToString(result);
      EXPECT_EQ(result.err, "");
      if (result.status == 0) {
        EXPECT_TRUE(workspace.read("out") == expected);
      } else {
        EXPECT_TRUE(matches(afterBanner(result, command[0]), refusal)) << result.out;
        EXPECT_TRUE(command[0] != "zelsvm-predict" ||
                    result.out.find("runtime error") == std::string::npos)
            << result.out;
        EXPECT_EQ(workspace.files(), files);
        ++refused;
      }
    }
    EXPECT_GT(refused, 0) << text;
  }
}

// Some 80 MB of data, a working set of 270 and 100 of kernel rows, of which 3,000 steps ask for
// than 2 GB.
TEST(LargeProblem, TakesItsDataASetAndTheCache) {
  if (!limitsWork) GTEST_SKIP() << "The sanitizer maps more than any limit.";
  constexpr unsigned features = 34;
  Workspace workspace;
  zel::seedRandom(1);
  std::string text;
  for (int sample = 0; sample < 200'000; ++sample) {
    std::string values;
    int difference = 0;
    for (unsigned k = 1; k <= features; ++k) {
      const int digit = zel::nextRandom() % 10;
      difference += k % 2 == 0 ? digit : -digit;
      values.append(" ").append(std::to_string(k)).append(":.").append(std::to_string(digit));
    }
    text.append(difference > 0 ? "1" : "-1").append(values).append("\n");
  }
  workspace.write("data", text);
  const ToolResult result =
      runLimited(workspace, "ulimit -v 700000",
                 words("zelsvm-train -q -m 100 -c 10 -g 0.3 -L 3000 data model"));
  EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
  EXPECT_NE(workspace.read("model").find("TotalSV: "), std::string::npos);
}

// Their stacks alone exceed the address space.
TEST_F(LittleMemory, WithoutThreadsOneDoesTheWork) {
  const ToolResult result = runLimited(workspace, "ulimit -S -s 4000000 && ulimit -v 2000000",
                                       words("zelsvm-predict -q data model alone"));
  EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
  EXPECT_EQ(result.err, "");
  succeed(workspace, words("zelsvm-predict -q data model together"), twoThreads);
  EXPECT_TRUE(workspace.read("alone") == workspace.read("together"));
}

}  // namespace
