// Samples as whole numbers: text files mostly hold numbers of a few decimals.
#pragma once

#include <cstdint>
#include <optional>

namespace zelsvm {

// A power of ten, exactly, that values are multiplied by.
class DecimalScale {
 public:
  // A scale that makes 32-bit whole numbers of nearly all values, in the sense of isWhole; none
  // where there is no such scale.
  static std::optional<DecimalScale> find(const double* values, std::uint64_t count);

  [[nodiscard]] double power() const { return factor; }
  // The whole number nearest to the scaled value.
  [[nodiscard]] double nearest(double value) const {
    // Plain arithmetic, so that loops vectorise; right for magnitudes below 2^51.
    constexpr double shift = 6755399441055744.0;  // 1.5 * 2^52
    return (value * factor + shift) - shift;
  }
  // Does the whole number give the value back, to the bit?
  [[nodiscard]] bool isWhole(double value) const { return nearest(value) / factor == value; }

 private:
  explicit DecimalScale(double power) : factor(power) {}

  double factor;
};

}  // namespace zelsvm
