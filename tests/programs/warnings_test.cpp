// What is ignored or read as something else than it says: a warning, or with --strict an error.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/programs/tool_runs.h"

namespace {

using zeltest::afterBanner;
using zeltest::RunSettings;
using zeltest::succeed;
using zeltest::ToolResult;
using zeltest::words;
using zeltest::Workspace;

using zeltest::Command;
using Sentences = std::vector<std::string>;

const std::string more = " goes on behind its number, which is ignored";
const std::string none = " is no number and counts as 0";

class ToolWarnings : public testing::Test {
 protected:
  ToolWarnings() {
    workspace.write("data", "1 1:1\n-1 1:2\n");
    workspace.write("odd", "1 1:1\n-1 1:2x\n3\ncat 1:3\n");
    succeed(workspace, words("zelsvm-train -q data model"));
    workspace.write("bare", withoutLine("Gamma:"));
  }

  [[nodiscard]] std::string withoutLine(const std::string& begin) const {
    const std::string model = workspace.read("model");
    const auto place = model.find(begin);
    return model.substr(0, place) + model.substr(model.find('\n', place) + 1);
  }

  [[nodiscard]] ToolResult run(const Command& command, const RunSettings& settings = {}) const {
    return workspace.run(command[0], {command.begin() + 1, command.end()}, settings);
  }

  // The command ends well and says this on standard error. With --strict it prints the first
  // sentence as its error and writes nothing.
  void expectWarnings(const Command& command, const Sentences& sentences) {
    SCOPED_TRACE(testing::PrintToString(command));
    const auto before = workspace.files();
    Command strict = command;
    strict.insert(strict.begin() + 1, "--strict");
    for (const ToolResult& result :
         {run(strict), run(command, {.environment = {{"ZELSVM_STRICT", "1"}}})}) {
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.err, "");
      EXPECT_EQ(afterBanner(result, command[0]), sentences.at(0) + ".\n");
      EXPECT_EQ(workspace.files(), before);
    }
    const ToolResult result = run(command);
    std::string expected;
    for (const std::string& sentence : sentences)
      expected += command[0] + ": warning: " + sentence + "\n";
    EXPECT_EQ(result.status, 0) << testing::PrintToString(result);
    EXPECT_EQ(result.err, expected);
    for (const std::string& file : workspace.files())
      if (std::find(before.begin(), before.end(), file) == before.end())
        std::filesystem::remove(workspace.folder() / file);
  }

  Workspace workspace;
};

TEST_F(ToolWarnings, OfTheCommandLine) {
  const std::string behind = " stands behind a file name and is taken for one";
  const std::string surplus = " is one file too many and is ignored";
  const std::string end = "an end is missing, nothing is scaled";
  const std::pair<Command, Sentences> cases[] = {
      {{"zelsvm-train", "-q", "-c", "1x", "data"}, {"option -c: \"1x\"" + more}},
      {{"zelsvm-train", "-q", "--gamma=one", "data"}, {"option --gamma: \"one\"" + none}},
      {{"zelsvm-train", "-q", "-z", "-c1", "data"}, {"option \"-z\" is unknown and ignored"}},
      {{"zelsvm-train", "-qc"}, {"option \"-c\" lacks its argument and is ignored"}},
      {{"zelsvm-train", "-q", "data", "-c", "10"}, {"\"-c\"" + behind, "\"10\"" + surplus}},
      {{"zelsvm-train", "-q", "-w", "1:2 3", "data"},
       {"class weights: \"3\" has no weight and is ignored"}},
      {{"zelsvm-train", "-q", "-w", "1:2 3:4", "data"},
       {"class weights: \"3\" is no label of the data"}},
      {{"zelsvm-train", "-q", "-x", ":1", "data"}, {"scale parameter \":1\": " + end}},
      {{"zelsvm-scale", "-q", "-x", "a:1x", "data", "out"},
       {"scale parameter \"a:1x\": \"a\"" + none, "scale parameter \"a:1x\": \"1x\"" + more}},
      {{"zelsvm-scale", "-q", "-y", "0:1:2", "data", "out"},
       {"scale parameter \"0:1:2\": \"2\" is ignored"}},
      {{"zelsvm-scale", "-q", "data", "out", "more", "files"},
       {"\"more\"" + surplus + " (the first of 2)"}},
      {{"zelsvm-predict", "-q", "-I", "1x", "data", "model", "out"}, {"option -I: \"1x\"" + more}},
      {{"zelsvm-test", "-q", "-M", "3 4"}, {"option -M: \"3 4\"" + more}},
  };
  for (const auto& [command, sentences] : cases) expectWarnings(command, sentences);
}

TEST_F(ToolWarnings, OfFiles) {
  const Sentences odd = {"odd:2:6: value \"2x\"" + more,
                         "odd:3:1: line \"3\" has no feature and is skipped",
                         "odd:4:1: label \"cat\"" + none};
  expectWarnings(words("zelsvm-train -q odd"), odd);
  expectWarnings(words("zelsvm-train -q -X odd"), odd);
  expectWarnings(words("zelsvm-test -q odd"), odd);
  expectWarnings(words("zelsvm-scale -q odd out"), odd);
  expectWarnings(words("zelsvm-predict -q odd model out"), odd);
  const std::string bare =
      "bare: no \"Gamma:\" line: it counts as one divided by the number of features";
  expectWarnings(words("zelsvm-predict -q data bare out"), {bare});
  workspace.write("range", "X-scale: 0 1 2\n 0: 0 4x\n x: 1 2\n 1: 3\n0: 1 2\nremark\n");
  expectWarnings(words("zelsvm-scale -q -r range data out"),
                 {"range:1:14: text \"2\" at the end of the line is ignored",
                  "range:2:7: bound \"4x\"" + more, "range:3:2: feature \"x\"" + none,
                  "range:3:2: feature \"x\" has bounds already, which count (the first of 2)",
                  "range:4:2: line \"1: 3\" is unknown and ignored (the first of 2)"});
}

TEST_F(ToolWarnings, AreNoneForAllThatIsOrdinary) {
  workspace.write("marked", "\xEF\xBB\xBF" + workspace.read("data"));
  workspace.write("marked-model", "\xEF\xBB\xBF" + workspace.read("model"));
  const RunSettings strict = {.environment = {{"ZELSVM_STRICT", "1"}}};
  succeed(workspace, {"zelsvm-train", "-q", "-w", "1:2 -1:3", "marked", "again"}, strict);
  succeed(workspace, words("zelsvm-predict -q marked marked-model out"), strict);
  succeed(workspace, words("zelsvm-predict -q data model expected"), strict);
  EXPECT_EQ(workspace.read("out"), workspace.read("expected"));
  succeed(workspace, words("zelsvm-scale -q -y 0:1 -s range data scaled"), strict);
  succeed(workspace, words("zelsvm-scale -q --restore=range marked restored"), strict);
  EXPECT_EQ(workspace.read("scaled"), workspace.read("restored"));
}

TEST_F(ToolWarnings, LongNamesTrainAsLettersDo) {
  succeed(workspace, words("zelsvm-train -q -c 2 -t 1 -g 0.5 -X data letters"));
  succeed(workspace,
          words("zelsvm-train --cost 2 --quiet --kernel=1 --gamma=0.5 --dense data names"));
  EXPECT_EQ(workspace.read("letters"), workspace.read("names"));
  const ToolResult unknown = run(words("zelsvm-train --gama=0.5 data other"));
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(unknown.out, "Option --gama is unknown; did you mean --gamma?\n");
  for (const char* question : {"--help", "--version"}) {
    const ToolResult answer = run({"zelsvm-predict", question, "missing"},
                                  {.environment = {{"ZELSVM_PLATFORM", "none"}}});
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.err, "");
    EXPECT_NE(answer.out.find(std::string(question) == "--help" ? "Usage: " : "zelsvm-predict "),
              std::string::npos);
  }
}

}  // namespace
