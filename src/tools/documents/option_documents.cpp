#include "tools/documents/option_documents.h"

#include <sstream>
#include <utility>
#include <vector>

#include "tools/options/option_table.h"

namespace zelsvm_opt {
namespace {

using namespace std::string_view_literals;

template <typename... Parts>
std::string concat(const Parts&... parts) {
  std::string text;
  (text.append(parts), ...);
  return text;
}

std::string replaced(std::string_view text, char from, std::string_view to) {
  std::string result;
  for (const char c : text) {
    if (c == from)
      result += to;
    else
      result += c;
  }
  return result;
}

// Value and words of each choice.
std::vector<std::pair<std::string, std::string>> choicesOf(const Option& option) {
  std::vector<std::pair<std::string, std::string>> choices;
  std::istringstream list{std::string(option.choices)};
  for (std::string choice; std::getline(list, choice, ',');) {
    const std::size_t blank = choice.find(' ');
    choices.emplace_back(choice.substr(0, blank), choice.substr(blank + 1));
  }
  return choices;
}

// The option's spellings, empty where it lacks one.
std::string letterOf(const Option& option) {
  return option.letter == noLetter ? "" : std::string{'-', option.letter};
}

std::string nameOf(const Option& option) {
  return option.name.empty() ? "" : concat("--", option.name);
}

std::string manualEntry(const Option& option) {
  std::string text;
  for (const std::string& spelling : {letterOf(option), nameOf(option)})
    if (!spelling.empty())
      text += concat(text.empty() ? ".It Fl " : " , Fl ", std::string_view(spelling).substr(1));
  if (takesArgument(option)) text += concat(" Ar ", replaced(option.argument, ':', " : Ns Ar "));
  return concat(text, "\n", option.manual);
}

template <typename Wanted>
std::string manualList(const Wanted& wanted) {
  std::string text = ".Bl -tag -width Ds\n";
  for (const Option& option : optionTable())
    if (wanted(option)) text += manualEntry(option);
  return text + ".El\n";
}

// "letter:name:choices": no choices for an option without an argument, "value" where all may stand.
std::string bashEntry(const Option& option) {
  std::string choices;
  for (const auto& [value, words] : choicesOf(option))
    choices += concat(choices.empty() ? "" : ",", value);
  if (choices.empty() && takesArgument(option)) choices = "value";
  const std::string letter = option.letter == noLetter ? "" : std::string{option.letter};
  return concat(letter, ":", option.name, ":", choices);
}

// What may stand as the argument, as _arguments takes it.
std::string zshChoices(const Option& option) {
  if (option.choices.empty()) return "";
  if (option.choices == "file") return "_files";
  std::string list;
  for (const auto& [value, words] : choicesOf(option))
    list += concat(list.empty() ? "" : " ", value, R"(\:")", words, "\"");
  return concat("((", list, "))");
}

// As _arguments takes it: '(-c --cost)'{-c+,--cost=}'[words]:argument:choices'
std::string zshEntry(const Option& option) {
  const bool valued = takesArgument(option);
  const std::string letter = letterOf(option);
  const std::string name = nameOf(option);
  const std::string letterForm = letter + (valued && !letter.empty() ? "+" : "");
  const std::string nameForm = name + (valued && !name.empty() ? "=" : "");
  std::string rest = concat("[", option.hint, "]");
  if (valued) rest += concat(":", replaced(option.argument, ':', R"(\:)"), ":", zshChoices(option));
  if (letter.empty() || name.empty()) return concat("'", letterForm, nameForm, rest, "'");
  return concat("'(", letter, " ", name, ")'{", letterForm, ",", nameForm, "}'", rest, "'");
}

// A case of a shell's case command: the options, one a line.
template <typename Entry>
std::string shellCase(const ToolDescription& tool, std::string_view begin, std::string_view end,
                      const Entry& entry) {
  std::string text = concat("    ", tool.name, ")\n      options=", begin, "\n");
  for (const Option& option : optionTable())
    if (belongs(option, tool.tool)) text += concat("        ", entry(option), "\n");
  return concat(text, "      ", end);
}

std::string zshFiles(const ToolDescription& tool) {
  std::string text;
  for (const std::string& name : fileNames(tool.tool)) {
    const bool optional = tool.files.find(concat("[", name, "]")) != std::string_view::npos;
    text += concat(text.empty() ? "'" : " '", optional ? "::" : ":", replaced(name, '_', " "),
                   ":_files'");
  }
  return text;
}

}  // namespace

std::string manualOptions(Tool tool) {
  if (tool == Tool::test)
    return manualList([](const Option& o) { return o.tools == static_cast<unsigned>(Tool::test); });
  if (tool != Tool::train) return manualList([&](const Option& o) { return belongs(o, tool); });
  std::string text;
  for (const auto& [group, title] : {std::pair{OptionGroup::problem, "What is trained"sv},
                                     {OptionGroup::data, "Data"sv},
                                     {OptionGroup::run, "Run"sv}}) {
    text += concat(".Ss ", title, "\n");
    text += manualList([&](const Option& o) { return belongs(o, tool) && o.group == group; });
  }
  return text;
}

std::string bashOptions() {
  std::string text = "  case ${COMP_WORDS[0]##*/} in\n";
  for (const ToolDescription& tool : allTools)
    text += concat(shellCase(tool, "'", "' ;;", bashEntry), "\n");
  return text + "  esac\n";
}

std::string zshOptions() {
  std::string text = "  case $service in\n";
  for (const ToolDescription& tool : allTools)
    text += concat(shellCase(tool, "(", ")\n      files=(", zshEntry), zshFiles(tool), ") ;;\n");
  return text + "  esac\n";
}

}  // namespace zelsvm_opt
