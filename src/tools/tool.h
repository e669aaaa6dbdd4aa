// The four tools of the one program file, told apart by the name it was started under.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace zelsvm_opt {

// Bits, so that an option can belong to several tools.
enum class Tool : unsigned { none = 0, train = 1, predict = 2, scale = 4, test = 8 };

struct ToolDescription {
  Tool tool;
  std::string_view name;
  std::string_view
      files;  // its arguments behind the options; in brackets those that may be missing
};

inline constexpr std::array<ToolDescription, 4> allTools = {{
    {Tool::train, "zelsvm-train", "training_data [model_file]"},
    {Tool::predict, "zelsvm-predict", "test_data model_file output_file"},
    {Tool::scale, "zelsvm-scale", "input_file output_file"},
    {Tool::test, "zelsvm-test", "[training_data]"},
}};

// Of a tool, but none.
const ToolDescription& describe(Tool tool);

// The names of its files, without brackets; none for no tool.
std::vector<std::string> fileNames(Tool tool);

// The program's name without its directories, which / and \ separate alike, and without a last
// ".exe" in any case.
std::string programBaseName(std::string_view program);

// All tools' names, with ", " between them.
std::string toolNames();

// The tool of exactly this name; Tool::none for any other name.
Tool toolNamed(std::string_view name);

}  // namespace zelsvm_opt
