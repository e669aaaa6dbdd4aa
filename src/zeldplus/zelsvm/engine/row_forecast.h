// Which kernel rows a solver will probably ask for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelsvm::inline ZEL_PLATFORM {

// Single kernel values, far cheaper than rows.
class PairKernel {
 public:
  PairKernel() = default;
  PairKernel(const PairKernel&) = delete;
  PairKernel& operator=(const PairKernel&) = delete;
  virtual ~PairKernel() = default;

  // Names the samples that pairValues speaks of.
  virtual void choose(const std::vector<std::uint64_t>& samples) = 0;
  // values[t] = K of the c-th and the t-th sample, for all of them.
  virtual void pairValues(std::size_t c, double* values) = 0;
};

class RowForecast {
 public:
  RowForecast() = default;
  RowForecast(const RowForecast&) = delete;
  RowForecast& operator=(const RowForecast&) = delete;
  virtual ~RowForecast() = default;

  // Fills samples with at most `most` distinct ones for which isKnown[sample] is 0, the likeliest
  // first. A row is being asked for.
  virtual void likelySamples(std::vector<std::uint64_t>& samples, unsigned most,
                             const std::vector<std::uint32_t>& isKnown, PairKernel& kernel) = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
