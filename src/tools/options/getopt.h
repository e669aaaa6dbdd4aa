// Options out of an argument vector.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/options/option_table.h"

namespace zelsvm_opt {

struct GivenOption {
  const Option* option;
  std::string spelling;  // as it was given, without its argument
  const char* argument;  // null for options without
};

// Walks over the arguments behind the program's name. "-" and "/" introduce letters; they may be
// clustered (-qX), an argument attached (-c10) or separate (-c 10). "--" introduces a long name,
// whose argument stands behind "=" or is the next one. The first argument that is no option ends
// the walk, and so do "-" and "--", which are passed over. An argument that begins with "/" is a
// path if it holds another one or names a file that is there.
class OptionParser {
 public:
  // The warnings receive a sentence for each argument that is ignored or that hardly means what it
  // is taken for. They must outlive the parser.
  OptionParser(Tool tool, std::span<const char* const> arguments,
               std::vector<std::string>& warnings)
      : tool(tool), arguments(arguments), warnings(warnings) {}

  // The next option; nothing at the end. Unknown letters, and letters without their argument, are
  // passed over with a warning. Throws AppException for a long name that is unknown, that lacks its
  // argument or that takes none.
  std::optional<GivenOption> next();

  // At the end: what is left, the file names. Throws AppException for a long name among them.
  [[nodiscard]] std::span<const char* const> rest();

 private:
  bool hasOption();
  std::optional<GivenOption> takeLetter();
  GivenOption takeLong(const char* text);
  // The next argument; null at the end.
  const char* takeArgument();

  Tool tool;
  std::span<const char* const> arguments;
  std::vector<std::string>& warnings;
  std::size_t position = 1;
  const char* cluster = "";
  char introducer = '-';
  bool ended = false;  // by "-" or "--"
};

}  // namespace zelsvm_opt
