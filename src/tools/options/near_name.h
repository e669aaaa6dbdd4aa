// Which of some names was probably meant.
#pragma once

#include <span>
#include <string_view>

namespace zelsvm_opt {

// The name that the text begins, or else the one that takes the fewest changes of a letter, as far
// as those are few; empty where there is none.
std::string_view nearName(std::string_view text, std::span<const std::string_view> names);

}  // namespace zelsvm_opt
