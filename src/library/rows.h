// The content of Samples: checked arrays, owned or borrowed, and the engine's view of them.
#pragma once

#include <zelsvm/zelsvm.h>

#include <cstdint>
#include <memory>
#include <span>
#include <variant>
#include <vector>

#include "data/matrix.h"
#include "data/table_matrix.h"

namespace zelsvm::detail {

// Kernel values as the caller gives them.
struct GivenKernel {
  std::variant<zelmag::StridedNumbers<double>, zelmag::StridedNumbers<float>, KernelRows> values;
  KernelColumns columns;
};

// Kernel values, or features: sparse where there are row offsets, else dense.
struct Rows {
  std::vector<double> ownedValues{};
  std::vector<int> ownedColumns{};
  std::vector<int> ownedOffsets{};
  std::span<const double> values{};  // these three where sparse
  std::span<const int> columns{};
  std::span<const int> offsets{};
  // Where dense: so many of the features, those behind them are 0.
  std::variant<zelmag::StridedNumbers<double>, zelmag::StridedNumbers<float>> table{};
  std::uint64_t tableColumns = 0;
  std::shared_ptr<const GivenKernel> kernel{};
  std::uint64_t rows = 0;
  std::uint64_t features = 0;  // columns of kernel values

  [[nodiscard]] bool isSparse() const { return !offsets.empty(); }
};

// What only the library may do with its public objects.
struct Access {
  static Samples samples(std::shared_ptr<const Rows> rows) { return Samples(std::move(rows)); }
  static const std::shared_ptr<const Rows>& rows(const Samples& samples) { return samples.content; }
  static Model model(std::unique_ptr<ModelState> state);
};

// A matrix that looks at the rows, which hold features.
std::unique_ptr<zelmag::AbstractMatrix<double>> matrixOf(const Rows& rows);

// The same samples with at least so many features, the new ones 0. They look at the original's
// numbers.
std::shared_ptr<const Rows> widened(const std::shared_ptr<const Rows>& rows,
                                    std::uint64_t features);

}  // namespace zelsvm::detail
