// Maxima and minima of lanes in which what is not a number never wins. The processors' own differ
// in that, and the library's over all lanes begin from the largest number in place of infinity
// where they go lane by lane.
#pragma once

#include <hwy/highway.h>

#include <cstdint>

namespace zelsvm::ZEL_ISA {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Doubles = hn::ScalableTag<double>;
using Pack = hn::Vec<Doubles>;

constexpr Doubles doubles;
constexpr std::uint64_t lanes = HWY_LANES(double);

// a where it is larger, else b.
HWY_INLINE Pack larger(Pack a, Pack b) {
#if HWY_ARCH_X86
  return hn::Max(a, b);
#else
  return hn::IfThenElse(hn::Gt(a, b), a, b);
#endif
}

// a where it is smaller, else b.
HWY_INLINE Pack smaller(Pack a, Pack b) {
#if HWY_ARCH_X86
  return hn::Min(a, b);
#else
  return hn::IfThenElse(hn::Lt(a, b), a, b);
#endif
}

HWY_INLINE double largestOf(Pack a) {
  double values[lanes];
  hn::StoreU(a, doubles, values);
  double best = values[0];
  for (std::uint64_t k = 1; k < lanes; ++k) best = values[k] > best ? values[k] : best;
  return best;
}

HWY_INLINE double smallestOf(Pack a) {
  double values[lanes];
  hn::StoreU(a, doubles, values);
  double best = values[0];
  for (std::uint64_t k = 1; k < lanes; ++k) best = values[k] < best ? values[k] : best;
  return best;
}

}  // namespace
}  // namespace zelsvm::ZEL_ISA
