// The options of all tools in one table: what parsers read and what users are told.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "tools/options.h"
#include "tools/tool.h"

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

// Sections of the trainer's page.
enum class OptionGroup { problem, data, run };

inline constexpr char noLetter = '\0';
// Tools of an option that a program of any other name has, too.
inline constexpr unsigned everyName = ~0U;

// An option of some tools. Where tools describe theirs differently, it has a row for each.
struct Option {
  char letter;            // or noLetter
  std::string_view name;  // the long one without its dashes; empty: there is a letter only
  unsigned tools;         // bits of Tool
  OptionTarget target;
  std::string_view argument;  // its name; empty for options without
  // Of the argument: "value words,value words,...", or "file"; empty where anything may stand.
  std::string_view choices;
  OptionGroup group;
  std::string_view hint;    // some words, for completions and --help
  std::string_view usage;   // its lines of the usage texts; empty where they leave it out
  std::string_view manual;  // its lines of the man pages
};

// All rows, in the order of the usage texts.
std::span<const Option> optionTable();

bool belongs(const Option& option, Tool tool);
bool takesArgument(const Option& option);

// The tool's option of this letter or long name; null when it has none.
const Option* findOption(Tool tool, char letter);
const Option* findOption(Tool tool, std::string_view name);

}  // namespace zelsvm_opt
