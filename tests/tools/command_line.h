// Builds option objects out of written-out command lines.
#pragma once

#include <string>
#include <vector>

#include "tools/options.h"

namespace zeltest {

inline std::vector<const char*> pointers(const std::vector<std::string>& words) {
  std::vector<const char*> result;
  for (const std::string& word : words) result.push_back(word.c_str());
  return result;
}

// The options of a program started as words[0] with the other words as its arguments.
inline zelsvm_opt::ZelSvmOpt parse(const std::vector<std::string>& words) {
  const auto argv = pointers(words);
  return {static_cast<int>(argv.size()), argv.data()};
}

}  // namespace zeltest
