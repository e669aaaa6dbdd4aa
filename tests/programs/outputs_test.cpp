// What becomes of files that the tools write: when writing fails, when a signal comes, and when the
// file is one that is read.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "support/programs/tool_runs.h"

namespace {

namespace fs = std::filesystem;
using zeltest::Output;
using zeltest::refuse;
using zeltest::succeed;
using zeltest::ToolResult;
using zeltest::words;
using zeltest::Workspace;

class Outputs : public testing::Test {
 protected:
  Outputs() {
    workspace.write("data", zeltest::fileText(zeltest::classSamples(200, 3, {1, 12}, 1)));
    succeed(workspace, words("zelsvm-train -q data model"));
    succeed(workspace, words("zelsvm-scale -q -s record data scaled"));
    succeed(workspace, words("zelsvm-predict -q data model predictions"));
  }

  // The script with the built tools in its path.
  [[nodiscard]] ToolResult shell(const std::string& script) const {
    return workspace.run("/bin/bash", {"-c", script},
                         {.environment = {{"PATH", ZEL_TOOL_DIR ":/usr/bin:/bin"}}});
  }

  [[nodiscard]] std::map<std::string, std::string> contents() const {
    std::map<std::string, std::string> texts;
    for (const std::string& name : workspace.files())
      texts[name] = fs::is_regular_file(workspace.folder() / name) ? workspace.read(name) : "";
    return texts;
  }

  Workspace workspace;
};

TEST_F(Outputs, ThatWouldReplaceAnInputAreRefused) {
  fs::create_symlink("data", workspace.folder() / "link");
  fs::create_hard_link(workspace.folder() / "data", workspace.folder() / "twin");
  fs::create_directory(workspace.folder() / "folder");
  fs::create_symlink("../name.model", workspace.folder() / "folder/name");
  workspace.write("name.model", workspace.read("data"));
  workspace.write("broken", "no samples\n");
  const std::pair<const char*, const char*> cases[] = {
      {"zelsvm-train -q data data", "The model file must not be the training data: data."},
      {"zelsvm-train -q -c -1 link ./data",
       "The model file must not be the training data: ./data."},
      {"zelsvm-train -q data twin", "The model file must not be the training data: twin."},
      {"zelsvm-train -q broken broken", "The model file must not be the training data: broken."},
      {"zelsvm-train -q folder/name", "The model file must not be the training data: name.model."},
      {"zelsvm-predict -q data model model", "The output file must not be the model file: model."},
      {"zelsvm-predict -q link model data", "The output file must not be the test data: data."},
      {"zelsvm-scale -q -s data data out",
       "The file of saved parameters must not be the input file: data."},
      {"zelsvm-scale -q -r record -s data data out",
       "The file of saved parameters must not be the input file: data."},
      {"zelsvm-scale -q -s out data ./out",
       "The file of saved parameters must not be the output file: out."},
      {"zelsvm-scale -q -s data data data",
       "The file of saved parameters must not be the input file: data."},
      {"zelsvm-scale -q -r record data record",
       "The output file must not be the file of restored parameters: record."},
  };
  const auto before = contents();
  for (const auto& [command, message] : cases) {
    refuse(workspace, words(command), message);
    EXPECT_TRUE(contents() == before) << command;
  }
  refuse(workspace, words("zelsvm-train -q missing missing"), "failed to open missing.");
  for (const char* const harmless :
       {"zelsvm-train -q -v 2 data data", "zelsvm-scale -q -s /dev/null data /dev/null"}) {
    succeed(workspace, words(harmless));
    EXPECT_TRUE(contents() == before) << harmless;
  }
  succeed(workspace, words("zelsvm-scale -q -s ./record -r record link data"));
  EXPECT_EQ(workspace.read("data"), workspace.read("scaled"));
  EXPECT_EQ(workspace.read("record"), before.at("record"));
}

TEST_F(Outputs, AreTriedBeforeTheWork) {
  workspace.write("halves", "0.5 1:1\n1 1:2\n");
  const std::pair<const char*, const char*> cases[] = {
      {"zelsvm-train -q data missing/model", "failed to open missing/model."},
      {"zelsvm-predict -q data model missing/out", "failed to open missing/out."},
      {"zelsvm-scale -q data missing/out", "failed to open missing/out."},
      {"zelsvm-scale -q -s missing/record data out", "failed to open missing/record."},
      // What is wrong with the input comes first.
      {"zelsvm-train -q missing missing/model", "failed to open missing."},
      {"zelsvm-train -q halves missing/model",
       "Only integer values are supported for classification."},
      {"zelsvm-predict -q -b 1 data model missing/out",
       "The model does not contain probability parameters."},
  };
  const auto before = contents();
  for (const auto& [command, message] : cases) refuse(workspace, words(command), message);
  EXPECT_TRUE(contents() == before);
}

TEST_F(Outputs, StayAsTheyWereWhenWritingFails) {
  const std::pair<const char*, const char*> cases[] = {
      {"ulimit -f 1; exec zelsvm-train -q data model", "model"},
      {"ulimit -f 1; exec zelsvm-predict -q -b 1 data probable predictions", "predictions"},
      {"ulimit -f 1; exec zelsvm-scale -q data scaled", "scaled"},
      {"ulimit -f 1; exec zelsvm-scale -q data data", "data"},
      {"exec zelsvm-scale -q -x 0:9 -s /dev/full data scaled", "/dev/full"},
      {"exec zelsvm-train -q data /dev/full", "/dev/full"},
  };
  succeed(workspace, words("zelsvm-train -q -b 1 -R 1 data probable"));
  const auto before = contents();
  for (const auto& [script, file] : cases) {
    const ToolResult result = shell(script);
    EXPECT_EQ(result.status, 1) << script << testing::PrintToString(result);
    EXPECT_TRUE(result.out.ends_with(std::string("failed writing to file: ") + file + "\n"))
        << script << testing::PrintToString(result);
    EXPECT_TRUE(contents() == before) << script;
  }
}

// The process waits for a reader of the record while its output has all but its name.
TEST_F(Outputs, StayAsTheyWereWhenASignalComes) {
  ASSERT_EQ(::mkfifo((workspace.folder() / "pipe").c_str(), 0600), 0);
  const auto before = contents();
  for (const auto& [name, number] :
       {std::pair{"HUP", SIGHUP}, {"INT", SIGINT}, {"TERM", SIGTERM}}) {
    const ToolResult result = shell(
        "set -m\nzelsvm-scale -q -x 0:9 -s pipe data scaled & pid=$!\n"
        "until ls -A | grep -q '^.zelsvm-'; do sleep 0.02; done\n"
        "kill -" +
        std::string(name) + " $pid\nwait $pid");
    EXPECT_EQ(result.status, 128 + number) << testing::PrintToString(result);
    EXPECT_TRUE(contents() == before) << name;
  }
}

TEST_F(Outputs, AreWrittenThoughStandardOutputIsLost) {
  const std::string model = workspace.read("model");
  const std::string predictions = workspace.read("predictions");
  const std::pair<const char*, const char*> places[] = {
      {">&-", "Standard output cannot be written: Bad file descriptor.\n"},
      {"<&- >&-", "Standard output cannot be written: Bad file descriptor.\n"},
      {">/dev/full", "Standard output cannot be written: No space left on device.\n"},
      {">&- 2>&-", ""},
  };
  for (const auto& [place, sentence] : places) {
    SCOPED_TRACE(place);
    for (const char* const command : {"zelsvm-train data model", "zelsvm-scale data scaled",
                                      "zelsvm-predict data model predictions"}) {
      const ToolResult result = shell(std::string("exec ") + command + " " + place);
      EXPECT_EQ(result.status, 1);
      EXPECT_EQ(result.err, sentence);
    }
    EXPECT_TRUE(workspace.read("model") == model);
    EXPECT_TRUE(workspace.read("predictions") == predictions);
    for (const char* const name : {"model", "scaled", "predictions"})
      fs::remove(workspace.folder() / name);
    workspace.write("model", model);
    const ToolResult failed = shell(std::string("exec zelsvm-train missing ") + place);
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.err,
              *sentence == '\0' ? "" : sentence + std::string("failed to open missing.\n"));
  }
  const ToolResult full = shell(
      "(ulimit -f 0; exec zelsvm-predict data model predictions >log) 2>&1 | cat\n"
      "exit ${PIPESTATUS[0]}");
  EXPECT_EQ(full.status, 1);
  EXPECT_EQ(full.out,
            "Standard output cannot be written: File too large.\n"
            "failed writing to file: predictions\n");
}

TEST_F(Outputs, NeverBecomeAStandardStream) {
  ASSERT_EQ(::mkfifo((workspace.folder() / "pipe").c_str(), 0600), 0);
  const ToolResult result = shell(
      "zelsvm-scale -q -s pipe data scaled <&- >&- 2>&- & pid=$!\n"
      "until ls -A | grep -q '^.zelsvm-'; do sleep 0.02; done\n"
      "readlink /proc/$pid/fd/{0,1,2}\nkill $pid\nwait");
  EXPECT_EQ(result.out, "/dev/null\n/dev/null\n/dev/null\n");
}

TEST_F(Outputs, AreNotWrittenForAReaderThatWentAway) {
  fs::remove(workspace.folder() / "model");
  const auto before = contents();
  const ToolResult result =
      workspace.run("zelsvm-train", {"data", "model"}, {.output = Output::closedPipe});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(contents() == before);
}

// Where the place of a file may not be changed, the file is.
TEST_F(Outputs, AreWrittenInPlaceWhereTheyCannotBeReplaced) {
  workspace.copyProgram("zelsvm-scale");
  const std::string expected = workspace.read("scaled");
  const auto folder = workspace.folder() / "folder";
  fs::create_directory(folder);
  const std::string user =
      ::geteuid() == 0 ? "setpriv --reuid 65534 --regid 65534 --clear-groups " : "";
  const auto scale = [&](fs::perms folderMode, fs::perms fileMode, uid_t owner) {
    workspace.write("folder/out", std::string(1000000, 'x'));
    fs::permissions(folder / "out", fileMode);
    fs::permissions(folder, folderMode);
    for (const fs::path& path : {folder, folder / "out"})
      EXPECT_EQ(::geteuid() == 0 ? ::chown(path.c_str(), owner, owner) : 0, 0);
    fs::permissions(workspace.folder(), fs::perms::others_exec | fs::perms::owner_all);
    return shell("exec " + user + "./zelsvm-scale -q data folder/out");
  };
  const uid_t own = ::geteuid() == 0 ? 65534 : ::geteuid();
  EXPECT_EQ(scale(fs::perms(0555), fs::perms(0600), own).status, 0);
  EXPECT_TRUE(workspace.read("folder/out") == expected);
  fs::permissions(folder, fs::perms(0755));
  EXPECT_EQ(scale(fs::perms(0755), fs::perms(0444), own).status, 1) << "it is read-only";
  fs::permissions(folder / "out", fs::perms(0600));
  if (::geteuid() != 0) return;
  EXPECT_EQ(scale(fs::perms(0777), fs::perms(0666), 65533).status, 0);
  EXPECT_TRUE(workspace.read("folder/out") == expected);
  struct stat status {};
  EXPECT_EQ(::stat((folder / "out").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 65533u) << "it is another's still";
  EXPECT_EQ(workspace.files().size(), 8u);
}

}  // namespace
