// Dot products of samples that lie side by side, built once per instruction set.
#pragma once

#include <cstdint>

namespace zelsvm::inline ZEL_PLATFORM {

// Samples that stand together: element j of the s-th at panel[j * panelSamples + s].
inline constexpr std::uint64_t panelSamples = 16;

// out[c][s], s < panelSamples * panels, is the dot product of rows[c] with the s-th sample of
// consecutive panels of length elements, summed from the first element to the last.
using RowProducts = void (*)(const double* panels, std::uint64_t panelCount, std::uint64_t length,
                             const double* const* rows, double* const* out, unsigned count);

// The products for this processor.
RowProducts rowProducts();

#ifdef __x86_64__
namespace avx512 {
void rowProducts(const double* panels, std::uint64_t panelCount, std::uint64_t length,
                 const double* const* rows, double* const* out, unsigned count);
}
namespace avx2 {
void rowProducts(const double* panels, std::uint64_t panelCount, std::uint64_t length,
                 const double* const* rows, double* const* out, unsigned count);
}
#endif
namespace baseline {
void rowProducts(const double* panels, std::uint64_t panelCount, std::uint64_t length,
                 const double* const* rows, double* const* out, unsigned count);
}

}  // namespace zelsvm::inline ZEL_PLATFORM
