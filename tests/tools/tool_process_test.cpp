// The harness itself, tried on programs that every system has.
#include "tools/tool_process.h"

#include <gtest/gtest.h>

#include <csignal>

namespace {

using zeltest::Workspace;

TEST(ToolProcess, PassesEverythingInAndOut) {
  const Workspace workspace;
  workspace.write("here", "in the folder");
  const auto result =
      workspace.run("/bin/sh", {"-c", "cat; cat here; echo \"$1$NAME\" >&2; exit 7", "sh", "a b"},
                    {.environment = {{"NAME", "value"}}, .input = "typed\n"});
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(result.signal, 0);
  EXPECT_EQ(result.out, "typed\nin the folder");
  EXPECT_EQ(result.err, "a bvalue\n");
  EXPECT_EQ(workspace.files(), std::vector<std::string>{"here"});
}

TEST(ToolProcess, LargeOutputOnBothStreams) {
  const auto result =
      Workspace().run("/bin/sh", {"-c", "head -c 300000 /dev/zero >&2; head -c 300000 /dev/zero"});
  EXPECT_EQ(result.out.size(), 300000U);
  EXPECT_EQ(result.err.size(), 300000U);
}

TEST(ToolProcess, SignalsAndTimeLimit) {
  const auto killed = Workspace().run("/bin/sh", {"-c", "kill -SEGV $$"});
  EXPECT_EQ(killed.status, -1);
  EXPECT_EQ(killed.signal, SIGSEGV);
  EXPECT_FALSE(killed.timedOut);
  const auto slow = Workspace().run("/bin/sleep", {"60"}, {.limit = std::chrono::seconds(1)});
  EXPECT_TRUE(slow.timedOut);
}

TEST(ToolProcess, OutputsThatRefuse) {
  const auto closed =
      Workspace().run("/bin/sh", {"-c", "exec echo text"}, {.output = zeltest::Output::closedPipe});
  EXPECT_TRUE(closed.signal == SIGPIPE || closed.status != 0);
  const auto full =
      Workspace().run("/bin/sh", {"-c", "echo text"}, {.output = zeltest::Output::fullDevice});
  EXPECT_NE(full.status, 0);
}

TEST(ToolProcess, MissingProgram) { EXPECT_EQ(Workspace().run("/no/such/program").status, 127); }

}  // namespace
