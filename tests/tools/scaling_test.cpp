// The scale tool: exact outputs and what its saved records do.
#include <gtest/gtest.h>

#include "tools/tool_runs.h"

namespace {

using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

constexpr const char* samples = "1 1:0 2:5 3:-1\n-1 1:4 3:3\n2 1:2 2:5 3:1\n";
constexpr const char* unitSamples = "1 2:1 \n-1 1:1 3:1 \n2 1:0.5 2:1 3:0.5 \n";
constexpr const char* unitRecord = "X-scale: 0 1\n  0: 0 4\n  1: 0 5\n  2: -1 3\n";

TEST(ScaleTool, WritesScaledSamples) {
  const struct {
    const char *bounds, *input, *output;
  } cases[] = {
      {"-x -1:1", samples, "1 1:-1 2:1 3:-1 \n-1 1:1 2:-1 3:1 \n2 2:1 \n"},
      {"-x 0:1", samples, unitSamples},
      {"-x 0:1", "1 1:0 2:5 3:-1\r\n-1 1:4 3:3\r\n2 1:2 2:5 3:1\r\n", unitSamples},
      {"-x \"0:1\"", samples, unitSamples},
      {"-x :1", "1 1:4 2:0\n", "1 1:4 2:0 \n"},
      {"-x -1:1", "1 1:7 2:0\n2 1:7 2:3\n", "1 1:-1 2:-1 \n2 1:-1 2:1 \n"},
      {"-x 0:1", "1 1:7 2:1\n2 1:7 2:3\n", "1 \n2 2:1 \n"},
      {"-x 0:1", "1 1:7 2:1\n2 1:7 2:1\n", "1 \n2 \n"},
      {"-y 0:1 -x 0:2", "2 1:0\n4 1:2\n6 1:1\n", "0 \n0.5 1:2 \n1 1:1 \n"},
      {"-I 0", "1 0:0 1:5\n-1 0:4 1:7\n", "1 0:-1 1:-1 \n-1 0:1 1:1 \n"},
      {"-x ", "1 1:inf 2:nan 3:0x10 4:+1e2 5:-.5 6:1e-3x 7:-0x1p-2 9:abc 4x:1 10:\n",
       "1 1:inf 2:nan 3:16 4:100 5:-0.5 6:0.001 7:-0.25 9:0 4:1 \n"},
  };
  const Workspace workspace;
  for (const auto& c : cases) {
    workspace.write("in", c.input);
    EXPECT_EQ(succeed(workspace, words(std::string("zelsvm-scale -q ") + c.bounds + " in out")),
              "");
    EXPECT_EQ(workspace.read("out"), c.output) << c.bounds << " on " << c.input;
  }
}

TEST(ScaleTool, RecordGivesTheSameScalingAgain) {
  const Workspace workspace;
  workspace.write("in", samples);
  succeed(workspace, words("zelsvm-scale -x 0:1 -y 0:10 -s record in first"));
  EXPECT_EQ(workspace.read("record"), std::string(unitRecord) + "Y-scale: 0 10\n  -1 2\n");
  succeed(workspace, words("zelsvm-scale -r record in second"));
  EXPECT_EQ(workspace.read("first"), workspace.read("second"));
}

TEST(ScaleTool, RecordOfTheSameNameIsRestoredAndNotRewritten) {
  const Workspace workspace;
  workspace.write("in", samples);
  const std::string record = "X-scale: 0 2\n  0: 0 8\nremark\n";
  workspace.write("record", record);
  succeed(workspace, words("zelsvm-scale -s record -r record in out"));
  EXPECT_EQ(workspace.read("record"), record);
  succeed(workspace, words("zelsvm-scale -s copy -r record in out"));
  EXPECT_EQ(workspace.read("copy"), "X-scale: 0 2\n  0: 0 8\n");
}

TEST(ScaleTool, RecordAndFileOfDifferentWidths) {
  const Workspace workspace;
  workspace.write("record", unitRecord);
  workspace.write("wide", "1 1:2 2:7 4:9\n");
  succeed(workspace, words("zelsvm-scale -r record wide out"));
  EXPECT_EQ(workspace.read("out"), "1 1:0.5 2:1.4 3:0.25 4:9 \n");
  workspace.write("narrow", "1 1:2\n");
  succeed(workspace, words("zelsvm-scale -r record narrow out"));
  EXPECT_EQ(workspace.read("out"), "1 1:0.5 3:0.25 \n");
}

}  // namespace
