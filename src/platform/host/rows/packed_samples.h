// The samples of a solve as the host's row products want them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "base/vectors.h"
#include "data/matrix.h"
#include "platform/host/rows/row_products.h"
#include "platform/host/rows/whole_numbers.h"

namespace zelsvm {

// Every element of every sample, in panels (row_products.h); the last panel is filled up with
// zeros. In a sparse row an entry that repeats a column adds to it. Where
// the samples are many, values of few decimals are kept as whole numbers of 32 bits, and what some
// lack as remainders: products are bound by the memory that they read.
class PackedSamples {
 public:
  // Up to cachedBytes the values are kept as they are. Throws RuntimeException when memory runs
  // out.
  void assign(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t cachedBytes);

  [[nodiscard]] std::uint64_t panels() const { return panelCount; }
  [[nodiscard]] std::uint64_t length() const { return cols; }
  [[nodiscard]] std::uint64_t bytes() const {
    return elements.size() * sizeof(double) + wholeNumbers.size() * sizeof(std::int32_t);
  }

  // Turns the length elements of a row of the matrix into the factors that stand for it here.
  void toFactors(double* row) const;
  // out[c][s]: dot product of the row behind factors[c] with sample panelSamples * begin + s, up
  // to the last one of panel end - 1.
  void multiply(std::uint64_t begin, std::uint64_t end, const double* const* factors,
                double* const* out, unsigned count) const;

 private:
  // The scaled value is this much more than its whole number.
  struct Remainder {
    std::uint64_t sample;
    std::uint64_t column;
    double value;
  };

  [[nodiscard]] std::uint64_t elementCount() const { return panelCount * panelSamples * cols; }
  [[nodiscard]] bool packWhole(const zelmag::AbstractMatrix<double>& matrix,
                               const DecimalScale& newScale);
  void addRemainders(std::uint64_t begin, std::uint64_t end, const double* const* factors,
                     double* const* out, unsigned count) const;

  std::uint64_t panelCount = 0;
  std::uint64_t cols = 0;
  // A product of factors and elements is this many products of values.
  double unit = 1;
  std::optional<DecimalScale> scale;  // of the whole numbers; else elements are the values
  HostVector<double> elements;
  HostVector<std::int32_t> wholeNumbers;
  std::vector<Remainder> remainders;  // panel by panel
};

}  // namespace zelsvm
