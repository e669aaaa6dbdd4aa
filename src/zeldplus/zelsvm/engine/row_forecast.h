// Which kernel rows a solver will probably ask for.
#pragma once

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

  // Resizes values to K of every pair of the given samples, row after row.
  virtual void pairValues(const std::vector<std::uint64_t>& samples,
                          std::vector<double>& values) = 0;
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
