// Register tiles: as many running sums as the processor keeps in registers.
#pragma once

#include <cstdint>

#include "platform/host/isa/lanes.h"

namespace zelsvm::ZEL_ISA {

// Unrolls the loop that follows, completely: later in its work the compiler would do so by itself,
// but keep arrays in memory that could be registers.
#define ZEL_UNROLLED _Pragma("GCC unroll 16")

// Vectors across a tile, and rows down. There are 32 registers, or 16.
inline constexpr unsigned tileVectors = 3;
#if defined(__AVX512F__) || defined(__aarch64__)
inline constexpr unsigned tallTile = 8;
#else
inline constexpr unsigned tallTile = 4;
#endif
template <typename T>
inline constexpr std::uint64_t tileColumns = tileVectors* Lanes<T>::count;

// Columns are fetched so many bytes ahead of their use.
inline constexpr std::uint64_t fetchedAhead = 4096;

template <typename T>
HWY_INLINE void fetch(const T* columns) {
  const char* const ahead = reinterpret_cast<const char*>(columns) + fetchedAhead;
  for (std::uint64_t at = 0; at < tileColumns<T> * sizeof(T); at += 64)
    __builtin_prefetch(ahead + at);
}

enum class Sums { fromZero, continued };

// out[r][c] = or += sum of a[k * stride + r] b[k * tileColumns + c], k < length, for `height` rows
// of `panels` tiles' columns; the panels of b lie panelSize elements apart.
template <typename T, unsigned height, unsigned panels, Sums start>
HWY_INLINE void multiplyTile(const T* HWY_RESTRICT a, std::uint64_t stride, const T* HWY_RESTRICT b,
                             std::uint64_t panelSize, std::uint64_t length, T* const* out) {
  constexpr unsigned width = panels * tileVectors;
  constexpr std::uint64_t lanes = Lanes<T>::count;
  Lanes<T> sums[height][width];
  ZEL_UNROLLED for (unsigned r = 0; r < height; ++r)
      ZEL_UNROLLED for (unsigned v = 0; v < width; ++v) sums[r][v] =
          start == Sums::fromZero ? Lanes<T>(0.0) : Lanes<T>::load(out[r] + v * lanes);
  for (std::uint64_t k = 0; k < length; ++k) {
    fetch(b);
    Lanes<T> column[width];
    ZEL_UNROLLED for (unsigned v = 0; v < width; ++v) column[v] =
        Lanes<T>::load(b + v / tileVectors * panelSize + v % tileVectors * lanes);
    ZEL_UNROLLED for (unsigned r = 0; r < height; ++r) {
      const Lanes<T> factor = Lanes<T>::all(a[r]);
      ZEL_UNROLLED for (unsigned v = 0; v < width; ++v) sums[r][v] =
          fusedMultiplyAdd(factor, column[v], sums[r][v]);
    }
    a += stride;
    b += tileColumns<T>;
  }
  ZEL_UNROLLED for (unsigned r = 0; r < height; ++r)
      ZEL_UNROLLED for (unsigned v = 0; v < width; ++v) sums[r][v]
          .store(out[r] + v * lanes);
}

// Calls use.operator()<height>(first) for tiles that cover rows 0 … rows - 1: tall ones, then those
// of half their height and so on.
template <unsigned height = tallTile, typename Use>
HWY_INLINE void forEachTile(std::uint64_t rows, const Use& use, std::uint64_t first = 0) {
  for (; first + height <= rows; first += height) use.template operator()<height>(first);
  if constexpr (height > 1) forEachTile<height / 2>(rows, use, first);
}

}  // namespace zelsvm::ZEL_ISA
