#include "tools/options/near_name.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace zelsvm_opt {
namespace {

// Letters to insert, to leave out and to replace (Levenshtein's distance).
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char letter : a) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (letter == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string_view nearName(std::string_view text, std::span<const std::string_view> names) {
  std::string_view nearest;
  std::size_t least = std::max<std::size_t>(1, text.size() / 3) + 1;
  for (const std::string_view name : names) {
    const std::size_t changes = name.starts_with(text) ? 0 : distance(text, name);
    if (changes >= least) continue;
    least = changes;
    nearest = name;
  }
  return nearest;
}

}  // namespace zelsvm_opt
