#include "tool_runs.h"

#include <algorithm>

#include "fuzzing.h"
#include "tools/flows/zelsvm_main.h"
#include "tools/platform_choice.h"

namespace zelfuzz {

std::vector<std::string> wordsOf(std::string_view text, char separator) {
  std::vector<std::string> words;
  while (words.size() < 32 && !text.empty()) {
    const std::size_t end = std::min(text.find(separator), text.size());
    words.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return words;
}

zelsvm_opt::ZelSvmOpt parse(const std::vector<std::string>& words) {
  std::vector<const char*> arguments;
  for (const std::string& word : words) arguments.push_back(word.c_str());
  return {static_cast<int>(arguments.size()), arguments.data()};
}

bool run(const zelsvm_opt::ZelSvmOpt& options) {
  return accepts([&] {
    zelsvm_main::ZelSvmMain<double>(options, zelsvm_main::choosePlatform("host", {})).run();
  });
}

}  // namespace zelfuzz
