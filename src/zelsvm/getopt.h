// Option letters out of an argument vector.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zelsvm_opt {

// Walks over the arguments behind the program's name. "-" and "/" introduce options; letters may be
// clustered (-qX), an argument attached (-c10) or separate (-c 10). The first argument that is no
// option ends the walk, and so do "-" and "--", which are passed over. An argument that begins with
// "/" and holds a further "/" is a file path and no option.
class OptionParser {
 public:
  // A letter followed by ":" takes an argument.
  OptionParser(std::span<const char* const> arguments, std::string letters)
      : arguments(arguments), letters(std::move(letters)) {}

  // The next option letter, '?' for an unknown letter or a missing argument, nothing at the end.
  [[nodiscard]] std::optional<char> next();

  // The argument of the last letter that takes one.
  [[nodiscard]] const char* argument() const { return value; }

  // Where the walk goes on: at the end, the first file name.
  [[nodiscard]] std::size_t index() const { return position; }

 private:
  bool enterCluster();
  bool takeArgument();

  std::span<const char* const> arguments;
  std::string letters;
  std::size_t position = 1;
  const char* value = nullptr;
  const char* cluster = "";
};

}  // namespace zelsvm_opt
