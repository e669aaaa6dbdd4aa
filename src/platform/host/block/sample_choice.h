// Which samples of a matrix take part.
#pragma once

#include <cstdint>
#include <span>

#include "data/matrix.h"

namespace zelsvm {

// Those with consecutive numbers, or those with the given ones, which outlive this.
class SampleChoice {
 public:
  SampleChoice() = default;  // none
  explicit SampleChoice(const zelmag::AbstractMatrix<double>& all)
      : SampleChoice(all, 0, all.rows()) {}
  SampleChoice(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t first,
               std::uint64_t count)
      : source(&matrix), first(first), size(count) {}
  SampleChoice(const zelmag::AbstractMatrix<double>& matrix, std::span<const std::uint64_t> numbers)
      : source(&matrix), numbers(numbers.data()), size(numbers.size()) {}

  [[nodiscard]] const zelmag::AbstractMatrix<double>& matrix() const { return *source; }
  [[nodiscard]] std::uint64_t count() const { return size; }
  // The i-th one's number.
  [[nodiscard]] std::uint64_t operator[](std::uint64_t i) const {
    return numbers == nullptr ? first + i : numbers[first + i];
  }
  // The choice's samples begin … begin + count - 1.
  [[nodiscard]] SampleChoice part(std::uint64_t begin, std::uint64_t count) const {
    SampleChoice chosen = *this;
    chosen.first += begin;
    chosen.size = count;
    return chosen;
  }

 private:
  const zelmag::AbstractMatrix<double>* source = nullptr;
  const std::uint64_t* numbers = nullptr;
  std::uint64_t first = 0;
  std::uint64_t size = 0;
};

}  // namespace zelsvm
