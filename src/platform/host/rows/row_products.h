// Dot products of samples that lie side by side, built once per instruction set.
#pragma once

#include <cstdint>

namespace zelsvm {

// Samples that stand together: element j of the s-th at panel[j * panelSamples + s].
inline constexpr std::uint64_t panelSamples = 16;

// out[c][s], s < panelSamples * panelCount, is unit times the dot product of rows[c] with the s-th
// sample of consecutive panels of length elements, summed from the first element to the last.
template <typename Element>
using PanelProducts = void (*)(const Element* panels, std::uint64_t panelCount,
                               std::uint64_t length, const double* const* rows, double* const* out,
                               unsigned count, double unit);

struct RowProducts {
  PanelProducts<double> numbers;
  PanelProducts<std::int32_t> wholeNumbers;
};

// The products for this processor.
const RowProducts& rowProducts();

#ifdef __x86_64__
namespace avx512 {
extern const RowProducts rowProductTable;
}
namespace avx2 {
extern const RowProducts rowProductTable;
}
#endif
namespace baseline {
extern const RowProducts rowProductTable;
}

}  // namespace zelsvm
