// Square blocks of numbers, as wide as a vector, turned over.
#pragma once

#include <cstdint>

#include "platform/host/isa/lanes.h"
#include "platform/host/isa/tiles.h"

namespace zelsvm::ZEL_ISA {

#if HWY_TARGET == HWY_SCALAR
template <typename T, unsigned size>
void exchange(Lanes<T>& a, Lanes<T>& b);  // there is nothing to exchange
#else
// Of a's and b's parts of `size` bytes a gets the even ones, in turns, and b the odd ones.
template <typename T, unsigned size>
HWY_INLINE void exchange(Lanes<T>& a, Lanes<T>& b) {
  const typename Lanes<T>::Tag tag;
  const Lanes<T> first = a;
  const Lanes<T> second = b;
  if constexpr (size >= 16 && 2 * size == Lanes<T>::count * sizeof(T)) {
    a = hn::ConcatLowerLower(tag, second.v, first.v);
    b = hn::ConcatUpperUpper(tag, second.v, first.v);
  } else if constexpr (size == 16) {
    a = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(second.v), first.v);
    b = hn::OddEvenBlocks(second.v, hn::SwapAdjacentBlocks(first.v));
  } else if constexpr (size == 8) {
    const hn::Repartition<double, decltype(tag)> pairs;
    const auto low = hn::BitCast(pairs, first.v);
    const auto high = hn::BitCast(pairs, second.v);
    a = hn::BitCast(tag, hn::InterleaveLower(low, high));
    b = hn::BitCast(tag, hn::InterleaveUpper(pairs, low, high));
  } else {
    a = hn::OddEven(hn::DupEven(second.v), first.v);
    b = hn::OddEven(second.v, hn::DupOdd(first.v));
  }
}
#endif

template <typename T, std::uint64_t distance>
HWY_INLINE void exchangeAll(Lanes<T> (&rows)[Lanes<T>::count]) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  if constexpr (distance < lanes) {
    ZEL_UNROLLED for (std::uint64_t r = 0; r < lanes; ++r) if ((r & distance) == 0)
        exchange<T, distance * sizeof(T)>(rows[r], rows[r + distance]);
    exchangeAll<T, 2 * distance>(rows);
  }
}

// to[c * toPitch + r] = from[r * fromPitch + c] for a vector's count of rows and columns.
template <typename T>
HWY_INLINE void transpose(const T* from, std::uint64_t fromPitch, T* to, std::uint64_t toPitch) {
  constexpr std::uint64_t lanes = Lanes<T>::count;
  Lanes<T> rows[lanes];
  ZEL_UNROLLED for (std::uint64_t r = 0; r < lanes; ++r) rows[r] =
      Lanes<T>::load(from + r * fromPitch);
  exchangeAll<T, 1>(rows);
  ZEL_UNROLLED for (std::uint64_t r = 0; r < lanes; ++r) rows[r].store(to + r * toPitch);
}

}  // namespace zelsvm::ZEL_ISA
