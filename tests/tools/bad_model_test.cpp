// Model files that prediction refuses.
#include <gtest/gtest.h>

#include "tools/tool_runs.h"

namespace {

using zeltest::refuse;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

class BadModel : public testing::Test {
 protected:
  BadModel() {
    workspace.write("data", zeltest::fileText(zeltest::classSamples(30, 2, {1, 2, 3}, 1)));
    succeed(workspace, words("zelsvm-train -q -x 0:1 data good"));
    model = workspace.read("good");
  }

  // Predicting with this model fails with the message, as sparse and as dense rows.
  void refuseModel(const std::string& text, const std::string& message) const {
    workspace.write("model", text);
    for (const char* command :
         {"zelsvm-predict -q data model out", "zelsvm-predict -q -X data model out"})
      refuse(workspace, words(command), message);
  }

  // The model with the text from one place up to a line's end replaced.
  [[nodiscard]] std::string replaced(const std::string& begin, const std::string& text) const {
    const auto position = model.find(begin);
    EXPECT_NE(position, std::string::npos) << begin;
    return model.substr(0, position) + text + model.substr(model.find('\n', position));
  }

  Workspace workspace;
  std::string model;
};

TEST_F(BadModel, HeaderLines) {
  const std::string numbers = "Error in loading SVM numeric values";
  const struct {
    const char *line, *replacement;
    std::string message;
  } cases[] = {{"SvmType:", "SvmType:", "Invalid model file format."},
               {"SvmType:", "SvmType: smo", "Unsupported SVM type"},
               {"KernelType:", "KernelType: ball", "Unsupported kernel type"},
               {"KernelType:", "", "Unsupported kernel type"},
               {"Gamma:", "Gamma: -1", "Invalid gamma or degree parameters"},
               {"  0:", "  4000000000: 0 1", numbers},
               {"NrClass:", "NrClass: 0", numbers},
               {"NrClass:", "NrClass: 2", numbers},
               {"NrClass:", "NrClass: 4294967295", numbers},
               {"NrClass:", "NrClass: 3\nBaseIdx: 2", "Unrecognizable base index"},
               {"TotalSV:", "TotalSV: 1000", numbers},
               {"Rho:", "", "The SVM rho values are absent."},
               {"Rho:", "Rho: 1 2", numbers},
               {"Rho:", "Rho: 1 2 1:2", numbers},
               {"Labels:", "", numbers},
               {"Labels:", "Labels: 1 2", numbers},
               {"NrSV:", "", numbers},
               {"NrSV:", "NrSV: 1 2 3", numbers},
               {"NrSV:", "NrSV: -1 15 15", numbers}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.line) + " -> " + c.replacement);
    refuseModel(replaced(c.line, c.replacement), c.message);
  }
}

TEST_F(BadModel, SupportVectorLines) {
  const std::string numbers = "Error in loading SVM numeric values";
  const std::string first = zeltest::vectorLines(model).at(0);
  refuseModel(replaced(first, "1 1:1 2:1"), numbers);
  refuseModel(replaced(first, "1:1 2:1"), numbers);
  refuseModel(replaced(first, "1 0 0:1"), "Base index underflow detected in sparse data");
  const auto lastLine = model.rfind('\n', model.size() - 2) + 1;
  refuseModel(model.substr(0, lastLine), numbers);
  const auto header = model.find("\nSV:\n");
  refuseModel(model.substr(0, header), "No proper data is found in input file");
  refuseModel(model.substr(0, header + 5), "No proper data is found in input file");
}

TEST_F(BadModel, OtherFiles) {
  refuseModel(workspace.read("data"), "Invalid model file format.");
  refuseModel("", "No proper data is found in input file");
  refuseModel(std::string("SvmType: \0", 10), "a NUL character in text file: model");
  for (const char* path : {"missing", "."})
    refuse(workspace, {"zelsvm-predict", "-q", "data", path, "out"},
           std::string("failed to open ") + path + ".");
}

// Wherever it ends, a part of a model is no model.
TEST_F(BadModel, CutAnywhere) {
  for (std::size_t length = 1; length < model.size(); length += 37) {
    workspace.write("model", model.substr(0, length));
    const auto result = workspace.run("zelsvm-predict", {"-q", "data", "model", "out"});
    EXPECT_EQ(result.status, 1) << length << testing::PrintToString(result);
  }
  for (const std::size_t missing : {1, 2, 3})
    refuseModel(model.substr(0, model.size() - missing),
                "The last line of the model is cut short.");
}

TEST_F(BadModel, NumbersThatAreNotFinite) {
  const std::string first = zeltest::vectorLines(model).at(0);
  const std::pair<const char*, std::string> cases[] = {{"Gamma:", "kernel parameters"},
                                                       {"X-scale:", "scale bounds"},
                                                       {"  0:", "scale bounds"},
                                                       {"Rho:", "rho values"},
                                                       {"Labels:", "labels"}};
  for (const char* value : {"nan", "inf", "1e999"}) {
    const std::string numbers = std::string(" ") + value + " 0 1";
    for (const auto& [line, part] : cases)
      refuseModel(replaced(line, line + numbers), "The SVM " + part + " are not finite numbers.");
    refuseModel(replaced(first, "1 " + std::string(value) + " 1:1 2:1"),
                "The SVM coefficients are not finite numbers.");
    refuseModel(replaced(first, "1 1 1:1 2:" + std::string(value)),
                "The SVM vectors are not finite numbers.");
  }
}

}  // namespace
