#include "tools/options/getopt.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/errors.h"
#include "base/output/file_warnings.h"
#include "tools/options/near_name.h"

namespace zelsvm_opt {
namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isLong(std::string_view argument) {
  return argument.size() > 2 && argument.starts_with("--") && isLetter(argument[2]);
}

bool isPath(std::string_view argument) {
  if (!argument.starts_with('/')) return false;
  std::error_code unknown;
  return argument.find('/', 1) != std::string_view::npos ||
         std::filesystem::exists(argument, unknown);
}

[[noreturn]] void refuse(const std::string& option, const std::string& reason) {
  throw zel::AppException(("Option " + option + " " + reason).c_str());
}

[[noreturn]] void refuseUnknown(Tool tool, const std::string& name) {
  std::vector<std::string_view> names;
  for (const Option& option : optionTable())
    if (belongs(option, tool) && !option.name.empty()) names.push_back(option.name);
  const std::string_view near = nearName(name, names);
  refuse("--" + name,
         near.empty() ? "is unknown." : "is unknown; did you mean --" + std::string(near) + "?");
}

}  // namespace

std::optional<GivenOption> OptionParser::next() {
  while (*cluster != '\0' || hasOption()) {
    if (*cluster != '\0') {
      if (auto given = takeLetter()) return given;
      continue;
    }
    const char* const argument = takeArgument();
    if (isLong(argument)) return takeLong(argument + 2);
    introducer = *argument;
    cluster = argument + 1;
  }
  return std::nullopt;
}

// Passes over what ends the options.
bool OptionParser::hasOption() {
  if (ended || position >= arguments.size()) return false;
  const std::string_view argument = arguments[position];
  ended = argument == "-" || argument == "--";
  if (ended) ++position;
  return !ended && !isPath(argument) && (argument.starts_with('-') || argument.starts_with('/'));
}

const char* OptionParser::takeArgument() {
  return position < arguments.size() ? arguments[position++] : nullptr;
}

std::optional<GivenOption> OptionParser::takeLetter() {
  const std::string spelling = {introducer, *cluster};
  const Option* const option = findOption(tool, *cluster++);
  if (option == nullptr) {
    warnings.push_back("option " + zel::quoted(spelling) + " is unknown and ignored");
    return std::nullopt;
  }
  if (!takesArgument(*option)) return GivenOption{option, spelling, nullptr};
  const char* const attached = std::exchange(cluster, "");
  const char* const argument = *attached != '\0' ? attached : takeArgument();
  if (argument != nullptr) return GivenOption{option, spelling, argument};
  warnings.push_back("option " + zel::quoted(spelling) + " lacks its argument and is ignored");
  return std::nullopt;
}

GivenOption OptionParser::takeLong(const char* text) {
  const std::string whole = text;
  const std::size_t nameEnd = whole.find('=');
  const std::string name = whole.substr(0, nameEnd);
  const Option* const option = findOption(tool, std::string_view(name));
  if (option == nullptr) refuseUnknown(tool, name);
  const bool attached = nameEnd != std::string::npos;
  if (attached && !takesArgument(*option)) refuse("--" + name, "takes no argument.");
  if (!takesArgument(*option)) return {option, "--" + name, nullptr};
  const char* const argument = attached ? text + nameEnd + 1 : takeArgument();
  if (argument == nullptr) refuse("--" + name, "lacks its argument.");
  return {option, "--" + name, argument};
}

std::span<const char* const> OptionParser::rest() {
  const auto names = arguments.subspan(std::min(position, arguments.size()));
  if (ended) return names;
  for (const std::string_view name : names) {
    if (isLong(name))
      refuse(std::string(name), "stands behind a file name, and options come first.");
    if (name.starts_with('-'))
      warnings.push_back(zel::quoted(name) + " stands behind a file name and is taken for one");
  }
  return names;
}

}  // namespace zelsvm_opt
