#include "platform/cuda/machine/device_samples.h"

#include <algorithm>
#include <limits>

#include "platform/cuda/machine/dense_samples.h"
#include "platform/cuda/machine/sparse_samples.h"

namespace zelsvm {
namespace {

// Rows laid out before one copy takes them to the device: worth the call, and still in the cache.
constexpr std::uint64_t stagedBytes = std::uint64_t{512} << 10;

// Nearly full rows take no more memory as dense ones, whose products are far faster.
bool densePays(const zelmag::AbstractMatrix<double>& matrix) {
  return !matrix.isSparse() || 5 * matrix.valueCount() >= 4 * matrix.rows() * matrix.cols();
}

}  // namespace

zellas::BlasContext& LinearAlgebra::blas() {
  if (!blasContext) {
    auto context = std::make_unique<zellas::BlasContext>();
    context->create();
    blasContext = std::move(context);
  }
  return *blasContext;
}

zellas::SparseContext<double>& LinearAlgebra::sparse() {
  if (!sparseContext) {
    auto context = std::make_unique<zellas::SparseContext<double>>();
    context->create();
    sparseContext = std::move(context);
  }
  return *sparseContext;
}

double* DenseRows::load(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t first,
                        std::uint64_t count) {
  const std::uint64_t cols = matrix.cols();
  rows.resize(cols * count);
  if (!matrix.isSparse()) {
    rows.upload({matrix.values() + first * cols, cols * count});
    return rows.data();
  }
  const std::uint64_t most = std::max<std::uint64_t>(1, stagedBytes / rowBytes(matrix));
  for (std::uint64_t done = 0; done < count; done += most) {
    const std::uint64_t part = std::min(most, count - done);
    staged.resize(part * cols);
    for (std::uint64_t r = 0; r < part; ++r)
      matrix.copyRow(staged.data() + r * cols, first + done + r, true);
    rows.upload({staged.data(), part * cols}, done * cols);
  }
  return rows.data();
}

std::unique_ptr<DeviceSamples> makeDeviceSamples(const zelmag::AbstractMatrix<double>& matrix,
                                                 LinearAlgebra& libraries) {
  if (densePays(matrix)) return std::make_unique<DenseSamples>(matrix, libraries.blas());
  return std::make_unique<SparseSamples>(matrix, libraries.sparse());
}

}  // namespace zelsvm
