// Matrices in every form of storage beside plain tables of what they hold.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "data/matrix.h"

namespace zeltest {

using Matrix = zelmag::AbstractMatrix<double>;
using Table = std::vector<std::vector<double>>;

// The row as the matrix writes it densely.
inline std::vector<double> rowOf(const Matrix& matrix, std::uint64_t row) {
  std::vector<double> values(matrix.cols(), 7.5);
  matrix.copyRow(values.data(), row, true);
  return values;
}

inline Table tableOf(const Matrix& matrix) {
  Table table;
  for (std::uint64_t i = 0; i < matrix.rows(); ++i) table.push_back(rowOf(matrix, i));
  return table;
}

// messy: columns in any order and some twice, explicit zeros, rows without entries, columns that
// never occur. full: every column stored, in any order.
enum class Storage { dense, sorted, messy, full };

inline std::string nameOf(Storage storage) {
  return std::vector<std::string>{"Dense", "Sorted", "Messy", "Full"}[static_cast<int>(storage)];
}

struct StoredMatrix {
  StoredMatrix(Storage storage, std::uint64_t rows, std::uint64_t cols, unsigned seed)
      : generator(seed) {
    for (std::uint64_t i = 0; i < rows; ++i) addRow(storage, i, cols);
    const bool dense = storage == Storage::dense;
    matrix = zelmag::createMatrix<double>(values.data(), dense ? nullptr : columns.data(),
                                          dense ? nullptr : offsets.data(), cols, rows);
  }

  Table table;                // of a repeated column the last entry
  std::vector<double> norms;  // over the stored values
  std::vector<double> values;
  std::vector<int> columns;
  std::vector<int> offsets{0};
  std::unique_ptr<Matrix> matrix;

 private:
  void addRow(Storage storage, std::uint64_t i, std::uint64_t cols) {
    std::vector<int> stored(cols);
    std::iota(stored.begin(), stored.end(), 0);
    if (storage == Storage::full || storage == Storage::messy)
      std::shuffle(stored.begin(), stored.end(), generator);
    if (storage == Storage::sorted || storage == Storage::messy)
      std::erase_if(stored, [this](int j) { return j == 2 || generator() % 3 == 0; });
    if (storage == Storage::messy && i % 4 == 1) stored.clear();
    if (storage == Storage::messy && i % 3 == 2 && !stored.empty())
      stored.push_back(stored.front());
    table.emplace_back(cols, 0.0);
    norms.push_back(0);
    for (const int j : stored) addValue(storage, i, j);
    offsets.push_back(static_cast<int>(values.size()));
  }

  void addValue(Storage storage, std::uint64_t i, int j) {
    const bool zero = storage == Storage::messy && generator() % 5 == 0;
    const double drawn = std::uniform_real_distribution<double>(-2, 3)(generator);
    const double v = j == 2 ? 3 : zero ? 0 : drawn;  // column 2 is constant
    values.push_back(v);
    columns.push_back(j);
    table[i][static_cast<std::size_t>(j)] = v;
    norms[i] += v * v;
  }

  std::mt19937 generator;
};

}  // namespace zeltest
