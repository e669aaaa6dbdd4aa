#include "zelsvm/tool.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zelsvm_opt {
namespace {

constexpr std::array<std::pair<std::string_view, Tool>, 4> tools = {{
    {"zelsvm-train", Tool::train},
    {"zelsvm-predict", Tool::predict},
    {"zelsvm-scale", Tool::scale},
    {"zelsvm-test", Tool::test},
}};

}  // namespace

std::string programBaseName(std::string_view program) {
  std::string name(program);
  const auto dot = name.rfind('.');
  if (dot != std::string::npos && strcasecmp(name.c_str() + dot, ".exe") == 0) name.resize(dot);
  const auto separator = name.find_last_of("/\\");
  if (separator != std::string::npos) name.erase(0, separator + 1);
  return name;
}

Tool toolNamed(std::string_view name) {
  const auto found =
      std::find_if(tools.begin(), tools.end(), [name](const auto& t) { return t.first == name; });
  return found == tools.end() ? Tool::none : found->second;
}

}  // namespace zelsvm_opt
