// The scale tool: exact outputs and what its saved records do.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>

#include "support/programs/tool_runs.h"

namespace {

using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

constexpr const char* samples = "1 1:0 2:5 3:-1\n-1 1:4 3:3\n2 1:2 2:5 3:1\n";
constexpr const char* unitSamples = "1 2:1 \n-1 1:1 3:1 \n2 1:0.5 2:1 3:0.5 \n";
constexpr const char* unitRecord = "X-scale: 0 1\n  0: 0 4\n  1: 0 5\n  2: -1 3\n";
constexpr std::size_t unitRecordSize = std::char_traits<char>::length(unitRecord);

TEST(ScaleTool, WritesScaledSamples) {
  const struct {
    const char *bounds, *input, *output;
  } cases[] = {
      {"-x -1:1", samples, "1 1:-1 2:1 3:-1 \n-1 1:1 2:-1 3:1 \n2 2:1 \n"},
      {"-x 0:1", samples, unitSamples},
      {"-x 0:1", "1 1:0 2:5 3:-1\r\n-1 1:4 3:3\r\n2 1:2 2:5 3:1\r\n", unitSamples},
      {"-x \"0:1\"", samples, unitSamples},
      {"-x ", "1 1:4 2:0\n", "1 1:4 2:0 \n"},
      {"-x -1:1", "1 1:7 2:0\n2 1:7 2:3\n", "1 1:-1 2:-1 \n2 1:-1 2:1 \n"},
      {"-x 0:1", "1 1:7 2:1\n2 1:7 2:3\n", "1 \n2 2:1 \n"},
      {"-x 0:1", "1 1:7 2:1\n2 1:7 2:1\n", "1 \n2 \n"},
      {"-y 0:1 -x 0:2", "2 1:0\n4 1:2\n6 1:1\n", "0 \n0.5 1:2 \n1 1:1 \n"},
      {"-I 0", "1 0:0 1:5\n-1 0:4 1:7\n", "1 0:-1 1:-1 \n-1 0:1 1:1 \n"},
      {"-x ", "1 1:inf 2:nan 3:0x10 4:+1e2 5:-.5 6:1e-3 7:-0x1p-2 9:0 8:1\n",
       "1 1:inf 2:nan 3:16 4:100 5:-0.5 6:0.001 7:-0.25 9:0 8:1 \n"},
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
  for (const char* const input : {samples, "1 1:3 2:1 3:0\n2 1:1 2:4 3:0\n", "1 1:0 2:0\n2 2:0\n",
                                  "1 1:5\n", "1 3:1\n2 1:2\n"})
    for (const char* const ranges : {"-x 0:1 -y 0:10", "-x -1:1", "-x  -y 0:1"})
      for (const char* const rest : {"-I 1", "-I 0"}) {
        SCOPED_TRACE(testing::Message() << input << ranges << rest);
        workspace.write("in", input);
        const std::string last = std::string(" ") + rest + " ";
        succeed(workspace,
                words(std::string("zelsvm-scale -s record ") + ranges + last + "in first"));
        succeed(workspace, words("zelsvm-scale -r record" + last + "in second"));
        EXPECT_EQ(workspace.read("first"), workspace.read("second")) << workspace.read("record");
      }
  workspace.write("in", samples);
  succeed(workspace, words("zelsvm-scale -x 0:1 -y 0:10 -s record in first"));
  EXPECT_EQ(workspace.read("record"), std::string(unitRecord) + "Y-scale: 0 10\n  -1 2\n");
}

// A last feature that was 0 everywhere is one that others lack, too.
TEST(ScaleTool, RecordCountsFeaturesThatAreZeroEverywhere) {
  const Workspace workspace;
  workspace.write("in", "1 1:3 2:0\n2 1:1\n");
  workspace.write("narrow", "1 1:3\n");
  workspace.write("wide", "1 1:3 3:0\n");
  succeed(workspace, words("zelsvm-scale -s record in out"));
  EXPECT_EQ(workspace.read("record"), "X-scale: -1 1\n  0: 1 3\n  1: 0 0\n");
  succeed(workspace, words("zelsvm-scale -r record narrow out"));
  EXPECT_EQ(workspace.read("out"), "1 1:1 2:-1 \n");
  succeed(workspace, words("zelsvm-scale -r record wide out"));
  EXPECT_EQ(workspace.read("out"), "1 1:1 2:-1 \n");
}

// What is left of a record is refused, unless it is a record, too: then features without bounds
// are named.
TEST(ScaleTool, CutRecordsAreNotTakenInSilence) {
  const Workspace workspace;
  workspace.write("in", samples);
  const std::string record = std::string(unitRecord) + "Y-scale: 0 10\n  -1 2\n";
  const std::map<std::size_t, std::string> warned = {
      {22, "zelsvm-scale: warning: record has no bounds for 2 of the features in in: 2, 3\n"},
      {31, "zelsvm-scale: warning: record has no bounds for 1 of the features in in: 3\n"},
      {unitRecordSize, ""}};
  for (std::size_t length = 0; length < record.size(); ++length) {
    workspace.write("record", record.substr(0, length));
    const auto result = workspace.run("zelsvm-scale", {"-r", "record", "in", "out"});
    const auto whole = warned.find(length);
    EXPECT_EQ(result.status, whole == warned.end() ? 1 : 0) << record.substr(0, length);
    EXPECT_EQ(result.err, whole == warned.end() ? "" : whole->second) << record.substr(0, length);
    if (whole != warned.end()) std::filesystem::remove(workspace.folder() / "out");
    EXPECT_EQ(workspace.files(), (std::vector<std::string>{"in", "record"}));
  }
}

TEST(ScaleTool, RecordAndFileOfDifferentWidths) {
  const Workspace workspace;
  workspace.write("record", unitRecord);
  workspace.write("wide", "1 1:2 2:7 4:9\n");
  const auto result = workspace.run("zelsvm-scale", words("-r record wide out"));
  EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
  EXPECT_EQ(result.err,
            "zelsvm-scale: warning: record has no bounds for 1 of the features in wide: 4\n");
  EXPECT_EQ(workspace.read("out"), "1 1:0.5 2:1.4 3:0.25 4:9 \n");
  workspace.write("narrow", "1 1:2\n");
  succeed(workspace, words("zelsvm-scale -r record narrow out"));
  EXPECT_EQ(workspace.read("out"), "1 1:0.5 3:0.25 \n");
}

}  // namespace
