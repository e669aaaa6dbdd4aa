// The options of all tools in one table.
#pragma once

#include <cstdint>
#include <string>
#include <variant>

#include "zelsvm/options.h"
#include "zelsvm/tool.h"

namespace zelsvm_opt {

// A member that the option's presence sets; such options take no argument.
struct Flag {
  bool ZelSvmOpt::*member;
  bool value;
};
// Accepted without an effect.
struct Ignored {};

// What an option fills, and so how its argument is read: numbers as a stream reads them, a bool as
// an int that is not 0, a string as it stands.
using OptionTarget = std::variant<double ZelSvmOpt::*, int ZelSvmOpt::*, unsigned ZelSvmOpt::*,
                                  std::uint64_t ZelSvmOpt::*, bool ZelSvmOpt::*,
                                  std::string ZelSvmOpt::*, Flag, Ignored>;

struct Option {
  char letter;
  unsigned tools;  // bits of Tool
  OptionTarget target;
};

// The tool's option of this letter; null when it has none.
const Option* findOption(Tool tool, char letter);

// The tool's letters as OptionParser takes them.
std::string optionLetters(Tool tool);

}  // namespace zelsvm_opt
