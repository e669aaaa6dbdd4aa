// The four tools of the one program file, told apart by the name it was started under.
#pragma once

#include <string>
#include <string_view>

namespace zelsvm_opt {

// Bits, so that an option can belong to several tools.
enum class Tool : unsigned { none = 0, train = 1, predict = 2, scale = 4, test = 8 };

// The program's name without its directories, which / and \ separate alike, and without a last
// ".exe" in any case.
std::string programBaseName(std::string_view program);

// The tool of exactly this name; Tool::none for any other name.
Tool toolNamed(std::string_view name);

}  // namespace zelsvm_opt
