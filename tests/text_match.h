// Regular expressions for tests. The C library's: std::regex warns when built with sanitizers.
#pragma once

#include <regex.h>

#include <stdexcept>
#include <string>

namespace zeltest {

// True if the whole text matches the extended regular expression; "." and "[^x]" also match line
// feeds.
inline bool matches(const std::string& text, const std::string& pattern) {
  regex_t compiled;
  if (regcomp(&compiled, ("^(" + pattern + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0)
    throw std::invalid_argument("bad pattern: " + pattern);
  const bool result = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  regfree(&compiled);
  return result;
}

}  // namespace zeltest
