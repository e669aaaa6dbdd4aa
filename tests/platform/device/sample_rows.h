// Samples to have kernel values of.
#pragma once

#include <cmath>
#include <memory>
#include <random>
#include <vector>

#include "data/matrix.h"
#include "platform/machine.h"

namespace zeltest {

using Rows = std::vector<std::vector<double>>;

inline zelsvm::KernelSettings kernelSettings(int type) {
  return {static_cast<zelsvm::SVM_KERNEL>(type), 0.3, 0.2, 3.7};
}

// Small whole numbers, so that sums and products of a linear kernel are exact and ties happen;
// fractions: any numbers. A third of them is 0.
inline Rows sampleRows(std::size_t rows, std::size_t cols, bool fractions, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> drawn(-1, 1);
  Rows table(rows, std::vector<double>(cols));
  for (auto& row : table)
    for (double& value : row) {
      value = generator() % 3 == 0 ? 0
              : fractions          ? drawn(generator)
                                   : std::floor(3 * drawn(generator));
    }
  return table;
}

// The rows as a matrix, dense or sparse.
class SampleMatrix {
 public:
  SampleMatrix(const Rows& rows, bool sparse) {
    const std::size_t cols = rows[0].size();
    for (const auto& row : rows) {
      for (std::size_t j = 0; j < cols; ++j) {
        if (sparse && row[j] == 0) continue;
        values.push_back(row[j]);
        columns.push_back(static_cast<int>(j));
      }
      offsets.push_back(static_cast<int>(values.size()));
    }
    matrix = zelmag::createMatrix<double>(values.data(), columns.data(),
                                          sparse ? offsets.data() : nullptr, cols, rows.size());
  }
  [[nodiscard]] const zelmag::AbstractMatrix<double>& get() const { return *matrix; }

 private:
  std::vector<double> values;
  std::vector<int> columns;
  std::vector<int> offsets{0};
  std::unique_ptr<zelmag::AbstractMatrix<double>> matrix;
};

}  // namespace zeltest
