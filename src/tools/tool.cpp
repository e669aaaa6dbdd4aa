#include "tools/tool.h"

#include <strings.h>

#include <algorithm>
#include <sstream>

namespace zelsvm_opt {

const ToolDescription& describe(Tool tool) {
  return *std::find_if(allTools.begin(), allTools.end(),
                       [tool](const ToolDescription& known) { return known.tool == tool; });
}

std::vector<std::string> fileNames(Tool tool) {
  std::vector<std::string> names;
  if (tool == Tool::none) return names;
  std::istringstream words{std::string(describe(tool).files)};
  for (std::string name; words >> name;) {
    std::erase_if(name, [](char c) { return c == '[' || c == ']'; });
    names.push_back(name);
  }
  return names;
}

std::string programBaseName(std::string_view program) {
  std::string name(program);
  const auto dot = name.rfind('.');
  if (dot != std::string::npos && strcasecmp(name.c_str() + dot, ".exe") == 0) name.resize(dot);
  const auto separator = name.find_last_of("/\\");
  if (separator != std::string::npos) name.erase(0, separator + 1);
  return name;
}

std::string toolNames() {
  std::string names;
  for (const ToolDescription& known : allTools)
    names.append(names.empty() ? "" : ", ").append(known.name);
  return names;
}

Tool toolNamed(std::string_view name) {
  const auto* const found =
      std::find_if(allTools.begin(), allTools.end(),
                   [name](const ToolDescription& known) { return known.name == name; });
  return found == allTools.end() ? Tool::none : found->tool;
}

}  // namespace zelsvm_opt
