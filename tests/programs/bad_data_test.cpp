// Files that no tool may take for samples or a model.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/programs/tool_runs.h"

namespace {

using zeltest::refuse;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

// Every tool that reads the file refuses it, as sparse and as dense rows.
void refuseData(const Workspace& workspace, const std::string& path, const std::string& message) {
  refuse(workspace, {"zelsvm-train", "-q", path, "result"}, message);
  refuse(workspace, {"zelsvm-train", "-q", "-X", path, "result"}, message);
  refuse(workspace, {"zelsvm-predict", "-q", path, "model", "result"}, message);
  refuse(workspace, {"zelsvm-scale", "-q", "-s", "record", path, "result"}, message);
}

class BadData : public testing::Test {
 protected:
  BadData() {
    workspace.write("data", "1 1:1\n-1 1:2\n");
    succeed(workspace, words("zelsvm-train -q data model"));
  }

  Workspace workspace;
};

TEST_F(BadData, FilesThatCannotBeRead) {
  namespace fs = std::filesystem;
  fs::create_directory(workspace.folder() / "folder");
  fs::create_symlink("nowhere", workspace.folder() / "dangling");
  for (const char* path : {"missing", "folder", "dangling", "data/below", "missing/data"})
    refuseData(workspace, path, std::string("failed to open ") + path + ".");
  refuseData(workspace, "/dev/null", "No proper data is found in input file");
  // It opens, but its first page cannot be read.
  refuseData(workspace, "/proc/self/mem", "The file /proc/self/mem cannot be read.");
}

TEST_F(BadData, Contents) {
  const std::string noData = "No proper data is found in input file";
  const std::string noNumbers = "Error in loading SVM numeric values";
  const std::string underflow = "Base index underflow detected in sparse data";
  const std::pair<std::string, std::string> cases[] = {
      {"", noData},
      {"1\n-1 2:\n", noData},
      {"1 1:1\n1:0.5 2:1\n", noNumbers},
      {"1 0:2\n", underflow},
      {workspace.read("model"), "Unexpected model content in input data file"},
      {std::string("1 1:1\n\0\n", 8), "The file file holds a NUL character, which no text has."}};
  for (const auto& [text, message] : cases) {
    workspace.write("file", text);
    refuseData(workspace, "file", message);
  }
}

TEST_F(BadData, Models) {
  const std::string model = workspace.read("model");
  const auto withLine = [&](const std::string& line) {
    const auto place = model.find(line.substr(0, line.find(' ')));
    return model.substr(0, place) + line + model.substr(model.find('\n', place));
  };
  const std::pair<std::string, std::string> cases[] = {
      {workspace.read("data"), "Invalid model file format."},
      {"", "No proper data is found in input file"},
      {withLine("Gamma: nan"), "The SVM kernel parameters are not finite numbers."},
      {withLine("NrClass: two"), "file:4:10: \"two\" is no count."},
      {model.substr(0, model.size() - 1), "The last line of the model is cut short."}};
  for (const auto& [text, message] : cases) {
    workspace.write("file", text);
    refuse(workspace, words("zelsvm-predict -q data file out"), message);
    refuse(workspace, words("zelsvm-predict -q -X data file out"), message);
  }
  for (const char* path : {"missing", "."})
    refuse(workspace, {"zelsvm-predict", "-q", "data", path, "out"},
           std::string("failed to open ") + path + ".");
}

}  // namespace
