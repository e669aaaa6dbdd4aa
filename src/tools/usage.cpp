#include "tools/usage.h"

#include <algorithm>
#include <vector>

#include "tools/options/option_table.h"

namespace zelsvm_opt {
namespace {

std::string firstUsageLine(Tool tool) {
  const ToolDescription& description = describe(tool);
  return ("Usage: " + std::string(description.name) + " [options] ")
      .append(description.files)
      .append("\n");
}

// "-c, --cost COST"
std::string spellings(const Option& option) {
  std::string text = option.letter == noLetter ? "    " : std::string{'-', option.letter};
  if (!option.name.empty())
    text.append(option.letter == noLetter ? "" : ", ").append("--").append(option.name);
  if (takesArgument(option)) text.append(" ").append(option.argument);
  return text;
}

// One line for each option of the tool, the words below each other.
std::string optionList(Tool tool) {
  std::vector<const Option*> options;
  std::size_t width = 0;
  for (const Option& option : optionTable()) {
    if (!belongs(option, tool)) continue;
    options.push_back(&option);
    width = std::max(width, spellings(option).size());
  }
  std::string text;
  for (const Option* const option : options) {
    std::string line = "  " + spellings(*option);
    line.resize(width + 4, ' ');
    text.append(line).append(option->hint).append("\n");
  }
  return text;
}

std::string helpText(Tool tool) {
  const std::string list = "options with their long names, --name argument or --name=argument:\n";
  if (tool != Tool::none) {
    const std::string usage = usageText(tool);
    return (usage.empty() ? firstUsageLine(tool) : usage + "\n") + list + optionList(tool);
  }
  return "One program under these names: " + toolNames() + "\n" + list + optionList(tool);
}

}  // namespace

std::string usageText(Tool tool) {
  if (tool == Tool::none || tool == Tool::test) return "";
  std::string text = firstUsageLine(tool) + "options:\n";
  for (const Option& option : optionTable())
    if (belongs(option, tool)) text += option.usage;
  return text;
}

std::string answerTo(const ZelSvmOpt& options) {
  if (options.version) return options.toolName + " " ZELSVM_VERSION "\n";
  return options.help ? helpText(toolNamed(options.toolName)) : "";
}

}  // namespace zelsvm_opt
