// Files that no tool may take for samples or a model, and strange ones that must work.
#include <gtest/gtest.h>

#include <filesystem>

#include "programs/tool_runs.h"

namespace {

using zeltest::refuse;
using zeltest::restOfLine;
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
  refuseData(workspace, "/dev/zero", "not a file that can be read twice: /dev/zero");
  // It opens, but its first page cannot be read.
  refuseData(workspace, "/proc/self/mem", "failed reading from file: /proc/self/mem");
}

TEST_F(BadData, Contents) {
  const std::string noData = "No proper data is found in input file";
  const std::string noNumbers = "Error in loading SVM numeric values";
  const std::string underflow = "Base index underflow detected in sparse data";
  const std::pair<std::string, std::string> cases[] = {
      {"", noData},
      {std::string(1000, '\n'), noData},
      {" \t\r\n\n", noData},
      {"1\n-1 2:\n", noData},
      {"1:0.5 2:1\n", noNumbers},
      {"1 1:1\n1:0.5 2:1\n", noNumbers},
      {"1 0:2\n", underflow},
      {"1 1:1\n-1 1:1 x:2\n", underflow},
      {workspace.read("model"), "Unexpected model content in input data file"},
      {std::string("1 1:1\n\0\n", 8), "a NUL character in text file: file"},
      {std::string("\x7f"
                   "ELF\2\1\1\0\0\0",
                   10),
       "a NUL character in text file: file"}};
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
      {std::string("SvmType: \0", 10), "a NUL character in text file: file"},
      {withLine("KernelType: ball"), "Unsupported kernel type"},
      {withLine("Gamma: nan"), "The SVM kernel parameters are not finite numbers."},
      {withLine("NrClass: two"), "file:4:10: \"two\" is no count."},
      {withLine("NrSV: 1 1x"), "file:8:9: \"1x\" is no count."},
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

TEST_F(BadData, WideSparseDataWork) {
  workspace.write("file", "1 1000000:1\n-1 999999:1 1:2\n");
  for (const char* kernel : {"-t 0", "-t 2 -g 1"}) {
    succeed(workspace, words(std::string("zelsvm-train -q ") + kernel + " file wide"));
    const std::string text = succeed(workspace, words("zelsvm-predict file wide out"));
    EXPECT_EQ(restOfLine(text, "Accuracy = "), "100%");
  }
}

TEST_F(BadData, LongLinesTrain) {
  std::string line;
  for (int k = 1; k <= 200000; ++k) line += ' ' + std::to_string(k) + ":0.0000000000000000125";
  workspace.write("file", "+1" + line + "\n0x2 1:+1 200001:1e5 7:-.5e-3\n");
  succeed(workspace, words("zelsvm-train -q -t 0 file long"));
  EXPECT_EQ(restOfLine(workspace.read("long"), "Labels: "), "1 2");
}

}  // namespace
