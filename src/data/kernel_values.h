// Kernel values that are given instead of made from features.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "data/table_matrix.h"

namespace zelmag {

// K(i, j) of rows and columns. The columns stand for training samples, all of them in their order
// unless it is told which. Where rows are training samples, too, K(i, j) = K(j, i).
class KernelValues {
 public:
  // columnOf[number]: the column of that training sample; empty where it is the number itself.
  explicit KernelValues(std::vector<std::uint64_t>&& columnOf) : places(std::move(columnOf)) {}
  KernelValues(const KernelValues&) = delete;
  KernelValues& operator=(const KernelValues&) = delete;
  virtual ~KernelValues() = default;

  [[nodiscard]] std::uint64_t columnOf(std::uint64_t number) const {
    return places.empty() ? number : places[number];
  }
  // May several threads read at the same time? Else only the one that runs the method.
  [[nodiscard]] virtual bool isShared() const = 0;
  // target[k] = K(row, columns[k]). Throws AppException for one that is not finite, and whatever
  // the source of the values throws.
  virtual void read(double* target, std::uint64_t row,
                    std::span<const std::uint64_t> columns) const = 0;
  virtual void read(float* target, std::uint64_t row,
                    std::span<const std::uint64_t> columns) const = 0;
  // K(row, row) of a training sample. Throws as read() does.
  [[nodiscard]] virtual double diagonal(std::uint64_t row) const = 0;

 private:
  std::vector<std::uint64_t> places;
};

// Throws AppException naming the row, counted from 1.
[[noreturn]] void throwNotFiniteKernel(std::uint64_t row);

// Numbers that lie elsewhere and outlive this.
template <typename Number>
class KernelTable : public KernelValues {
 public:
  KernelTable(const StridedNumbers<Number>& numbers, std::vector<std::uint64_t>&& columnOf)
      : KernelValues(std::move(columnOf)), numbers(numbers) {}

  [[nodiscard]] bool isShared() const override { return true; }
  void read(double* target, std::uint64_t row,
            std::span<const std::uint64_t> columns) const override;
  void read(float* target, std::uint64_t row,
            std::span<const std::uint64_t> columns) const override;
  [[nodiscard]] double diagonal(std::uint64_t row) const override;

 private:
  StridedNumbers<Number> numbers;
};

}  // namespace zelmag
