#include "tools/options/option_table.h"

#include <algorithm>

namespace zelsvm_opt {
namespace {

template <typename Matches>
const Option* findRow(Tool tool, const Matches& matches) {
  const std::span<const Option> options = optionTable();
  const auto found = std::find_if(options.begin(), options.end(), [&](const Option& option) {
    return belongs(option, tool) && matches(option);
  });
  return found == options.end() ? nullptr : &*found;
}

}  // namespace

bool belongs(const Option& option, Tool tool) {
  return option.tools == everyName || (option.tools & static_cast<unsigned>(tool)) != 0;
}

bool takesArgument(const Option& option) { return !option.argument.empty(); }

const Option* findOption(Tool tool, char letter) {
  if (letter == noLetter) return nullptr;
  return findRow(tool, [&](const Option& option) { return option.letter == letter; });
}

const Option* findOption(Tool tool, std::string_view name) {
  if (name.empty()) return nullptr;
  return findRow(tool, [&](const Option& option) { return option.name == name; });
}

}  // namespace zelsvm_opt
