#include "library/kernel_samples.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "data/kernel_matrix.h"

namespace zelsvm::detail {
namespace {

// The caller's function as a source of kernel values, for one call of the library.
class ComputedKernel : public zelmag::KernelValues {
 public:
  ComputedKernel(const KernelRows& caller, std::vector<std::uint64_t>&& columnOf)
      : KernelValues(std::move(columnOf)), caller(&caller), row(caller.columns) {}

  [[nodiscard]] bool isShared() const override { return false; }

  void read(double* target, std::uint64_t number,
            std::span<const std::uint64_t> columns) const override {
    gather(target, number, columns);
  }

  void read(float* target, std::uint64_t number,
            std::span<const std::uint64_t> columns) const override {
    gather(target, number, columns);
  }

  [[nodiscard]] double diagonal(std::uint64_t number) const override {
    if (diagonals.empty()) diagonals = madeDiagonal();
    return diagonals[number];
  }

 private:
  // What the function leaves out shows as not finite.
  void compute(std::uint64_t number) const {
    std::fill(row.begin(), row.end(), std::numeric_limits<double>::quiet_NaN());
    caller->compute(number, row);
  }

  template <typename T>
  void gather(T* target, std::uint64_t number, std::span<const std::uint64_t> columns) const {
    compute(number);
    for (std::uint64_t k = 0; k < columns.size(); ++k) {
      const double value = row[columns[k]];
      if (!std::isfinite(value)) zelmag::throwNotFiniteKernel(number);
      target[k] = static_cast<T>(value);
    }
  }

  // Folds and label pairs ask for their parts of it.
  [[nodiscard]] std::vector<double> madeDiagonal() const {
    std::vector<double> made = caller->diagonal;
    for (std::uint64_t i = made.size(); i < caller->rows; ++i) {
      compute(i);
      made.push_back(row[i]);
    }
    for (std::uint64_t i = 0; i < made.size(); ++i)
      if (!std::isfinite(made[i])) zelmag::throwNotFiniteKernel(i);
    return made;
  }

  const KernelRows* caller;
  mutable std::vector<double> row;
  mutable std::vector<double> diagonals;
};

template <typename Number>
std::shared_ptr<const zelmag::KernelValues> sourceOf(const zelmag::StridedNumbers<Number>& numbers,
                                                     std::vector<std::uint64_t>&& columnOf) {
  return std::make_shared<zelmag::KernelTable<Number>>(numbers, std::move(columnOf));
}

std::shared_ptr<const zelmag::KernelValues> sourceOf(const KernelRows& rows,
                                                     std::vector<std::uint64_t>&& columnOf) {
  return std::make_shared<ComputedKernel>(rows, std::move(columnOf));
}

std::unique_ptr<zelmag::AbstractMatrix<double>> matrixOfKernel(
    const Rows& rows, std::uint64_t trainingSamples, std::vector<std::uint64_t>&& columnOf) {
  return std::make_unique<zelmag::KernelMatrix>(
      std::visit([&](const auto& values) { return sourceOf(values, std::move(columnOf)); },
                 rows.kernel->values),
      trainingSamples, rows.rows);
}

}  // namespace

void requireKernelFits(const Rows& rows, const Parameters& parameters) {
  const bool precomputed = parameters.kernel == Kernel::precomputed;
  if (precomputed != (rows.kernel != nullptr))
    throw AppException(precomputed ? "A precomputed kernel needs kernel values, not features."
                                   : "Kernel values need the precomputed kernel.");
  if (!precomputed) return;
  if (rows.kernel->columns != KernelColumns::trainingSamples || rows.rows != rows.features)
    throw AppException("Kernel values to train on must be those of all samples with each other.");
  if (parameters.featureScale.lower != parameters.featureScale.upper)
    throw AppException("The parameter featureScale does not go with a precomputed kernel.");
}

std::unique_ptr<zelmag::AbstractMatrix<double>> trainingKernel(const Rows& rows) {
  return matrixOfKernel(rows, rows.rows, {});
}

std::unique_ptr<zelmag::AbstractMatrix<double>> testKernel(const Rows& rows,
                                                           const GenericModel<double>& model) {
  const zelmag::AbstractMatrix<double>& vectors = model.vectors();
  const std::uint64_t trainingSamples = model.featureCount;
  if (rows.kernel->columns == KernelColumns::trainingSamples) {
    if (rows.features != trainingSamples)
      zel::throwAppException("The kernel values must have a column for each of %lu samples.",
                             trainingSamples);
    return matrixOfKernel(rows, trainingSamples, {});
  }
  if (rows.features != vectors.rows())
    zel::throwAppException("The kernel values must have a column for each of %lu support vectors.",
                           vectors.rows());
  std::vector<std::uint64_t> columnOf(trainingSamples, 0);
  for (std::uint64_t v = 0; v < vectors.rows(); ++v) columnOf[vectors.rowNumber(v)] = v;
  return matrixOfKernel(rows, trainingSamples, std::move(columnOf));
}

void releaseKernel(GenericModel<double>& model) {
  model.setVectors(
      std::make_unique<zelmag::KernelMatrix>(model.vectors().rowIds(), model.featureCount));
}

}  // namespace zelsvm::detail
