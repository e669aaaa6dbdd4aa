#include "platform/host/block/packed_columns.h"

#include <algorithm>

#include "data/full_matrix.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

constexpr double nanosecondsPerElement = 0.7;
constexpr std::uint64_t panelsTogether = 4;

// Elements of one sample, stride apart, on memory that holds zeros.
template <typename T>
void scatter(const zelmag::AbstractMatrix<double>& matrix, std::uint64_t sample, T* target,
             std::uint64_t stride) {
  if (!matrix.isSparse())
    return zelmag::forEachStretch(
        zelmag::asFull(matrix), sample,
        [=](const double* values, std::uint64_t begin, std::uint64_t end) {
          for (std::uint64_t k = begin; k < end; ++k)
            target[k * stride] = static_cast<T>(*values++);
        });
  for (int p = matrix.rowOffsets()[sample]; p < matrix.rowOffsets()[sample + 1]; ++p)
    target[static_cast<std::uint64_t>(matrix.columnIndices()[p]) * stride] =
        static_cast<T>(matrix.values()[p]);
}

}  // namespace

template <typename T>
void PackedColumns<T>::assign(const SampleChoice& samples) {
  columns = samples.count();
  features = samples.matrix().cols();
  width = blockSweeps<T>().panelColumns;
  elements.resize(panels() * width * features);
  squares.resize(panels() * width);
  zel::forEachChunk(panels(), panelsTogether,
                    nanosecondsPerElement * static_cast<double>(width * features),
                    [&](std::uint64_t begin, std::uint64_t end) {
                      for (std::uint64_t panel = begin; panel < end; ++panel)
                        packPanel(samples, panel);
                    });
}

template <typename T>
void PackedColumns<T>::packPanel(const SampleChoice& samples, std::uint64_t panel) {
  T* const target = elements.data() + panel * width * features;
  const std::uint64_t count = std::min(width, columns - panel * width);
  if (samples.matrix().isSparse() || count < width) std::fill_n(target, width * features, T{0});
  for (std::uint64_t c = 0; c < count; ++c)
    scatter(samples.matrix(), samples[panel * width + c], target + c, width);
  blockSweeps<T>().norms(target, features, width, squares.data() + panel * width);
}

template <typename T>
void PackedRows<T>::assign(const SampleChoice& samples) {
  const std::uint64_t count = samples.count();
  features = samples.matrix().cols();
  elements.resize(count * features);
  squares.resize(count);
  if (samples.matrix().isSparse()) std::fill_n(elements.data(), elements.size(), T{0});
  const BlockSweeps<T>& sweeps = blockSweeps<T>();
  std::uint64_t height = 0;
  for (std::uint64_t first = 0; first < count; first += height) {
    height = tileHeight(sweeps.tileRows, count - first);
    T* const tile = elements.data() + first * features;
    for (std::uint64_t r = 0; r < height; ++r)
      scatter(samples.matrix(), samples[first + r], tile + r, height);
    sweeps.norms(tile, features, height, squares.data() + first);
  }
}

template class PackedColumns<double>;
template class PackedColumns<float>;
template class PackedRows<double>;
template class PackedRows<float>;

}  // namespace zelsvm
