#include "files/repeated_features.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "files/sample_line.h"

namespace zelsvm {

void warnOfRepeats(std::string_view line, std::uint64_t leadingCount, zel::FileWarnings& warnings) {
  SampleLine tokens(line);
  for (std::uint64_t i = 0; i < leadingCount; ++i) tokens.token();
  std::vector<std::pair<std::uint32_t, std::string_view>> features;
  SampleLine pair = tokens;
  for (std::uint32_t index = 0; tokens.nextIndex(index); pair = tokens)
    features.emplace_back(index, pair.tokenBeforeColon());
  std::stable_sort(features.begin(), features.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  for (std::size_t i = 1; i < features.size(); ++i) {
    if (features[i].first != features[i - 1].first) continue;
    warnings.add(features[i].second, "feature", "stands in its line again: its last value counts");
  }
}

}  // namespace zelsvm
