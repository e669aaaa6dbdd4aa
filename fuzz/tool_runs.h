// Runs of the tools inside this process.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/options.h"

namespace zelfuzz {

// The words of a text, which end at the separator; at most 32 of them.
std::vector<std::string> wordsOf(std::string_view text, char separator);

// The options of a program started as words[0] with the other words as its arguments. Throws
// AppException where it refuses them.
zelsvm_opt::ZelSvmOpt parse(const std::vector<std::string>& words);

// Runs the tool that the options name, which prints nothing; false if it refused.
bool run(const zelsvm_opt::ZelSvmOpt& options);

}  // namespace zelfuzz
