// Which of some names was probably meant.
#pragma once

#include <span>
#include <string_view>

namespace zelsvm_opt {

// The first name that begins with the text, else the one that the fewest changes of a letter make
// of it. Empty where even that takes many.
std::string_view nearName(std::string_view text, std::span<const std::string_view> names);

}  // namespace zelsvm_opt
