// Which kernel rows a solver will probably ask for.
#pragma once

#include <cstdint>
#include <vector>

namespace zelsvm::inline ZEL_PLATFORM {

// Names samples, the likeliest first.
class RowForecast {
 public:
  RowForecast() = default;
  RowForecast(const RowForecast&) = delete;
  RowForecast& operator=(const RowForecast&) = delete;
  virtual ~RowForecast() = default;

  // Fills samples with at most `most` distinct ones for which isKnown[sample] is 0.
  virtual void likelySamples(std::vector<std::uint64_t>& samples, unsigned most,
                             const std::vector<std::uint32_t>& isKnown) = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
