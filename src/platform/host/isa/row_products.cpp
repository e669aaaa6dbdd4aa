#include "platform/host/rows/row_products.h"

#include <cstddef>

#include "platform/host/isa/pack.h"
#include "rules/rule.h"

namespace zelsvm {
namespace ZEL_ISA {
namespace {

constexpr std::uint64_t pairLanes = std::uint64_t{2} * lanes;
constexpr int pairs = static_cast<int>(panelSamples / pairLanes);
// Rows that one pass over a panel serves: their sums fill the registers.
constexpr unsigned rowsPerPass = lanes == 8 ? 8 : lanes == 4 ? 2 : 1;
// Elements of a panel that stay in the first-level cache between passes.
constexpr std::uint64_t depth = 128;

// How far ahead of its use a panel is fetched from memory.
constexpr std::uint64_t fetchedAhead = 2048;

template <typename Element>
ZEL_RULE void fetch(const Element* elements) {
  constexpr std::uint64_t line = 64;
  const char* const ahead = reinterpret_cast<const char*>(elements) + fetchedAhead;
  for (std::uint64_t at = 0; at < panelSamples * sizeof(Element); at += line)
    __builtin_prefetch(ahead + at);
}

// A stretch of the elements of every sample.
struct Stretch {
  std::uint64_t begin;
  std::uint64_t end;
  bool first;
  bool last;
};

// Unrolls the loop that follows, completely: later in its work the compiler would do so by itself,
// but keep arrays in memory that could be registers.
#define ZEL_UNROLLED _Pragma("GCC unroll 16")

// Adds a stretch of `panels` panels, stride apart, to the sums in out; the last one ends them.
template <int panels, unsigned rows, typename Element>
ZEL_RULE void addTile(const Element* panel, std::uint64_t stride, const Stretch& stretch,
                      const double* const* row, double* const* out, double unit) {
  constexpr std::uint64_t count = std::uint64_t{panels} * pairs;
  Pack sums[rows][2 * count];
  ZEL_UNROLLED for (unsigned c = 0; c < rows; ++c) {
    ZEL_UNROLLED for (std::uint64_t p = 0; p < count; ++p) {
      const PackPair before =
          stretch.first ? PackPair{} : mixed<Element>(loadPair(out[c] + p * pairLanes));
      sums[c][2 * p] = before.first;
      sums[c][2 * p + 1] = before.second;
    }
  }
  const std::uint64_t end = stretch.end;
  for (std::uint64_t j = stretch.begin; j < end; ++j) {
    for (std::uint64_t p = 0; p < panels; ++p) fetch(panel + p * stride + j * panelSamples);
    Pack factors[rows];
    ZEL_UNROLLED for (unsigned c = 0; c < rows; ++c) factors[c] = broadcast(row[c] + j);
    ZEL_UNROLLED for (std::uint64_t p = 0; p < count; ++p) {
      const PackPair x =
          loadPair(panel + p / pairs * stride + j * panelSamples + p % pairs * pairLanes);
      ZEL_UNROLLED for (unsigned c = 0; c < rows; ++c) {
        sums[c][2 * p] = multiplyAdd(factors[c], x.first, sums[c][2 * p]);
        sums[c][2 * p + 1] = multiplyAdd(factors[c], x.second, sums[c][2 * p + 1]);
      }
    }
  }
  const Pack scale = splat(stretch.last ? unit : 1.0);
  ZEL_UNROLLED for (unsigned c = 0; c < rows; ++c) {
    ZEL_UNROLLED for (std::uint64_t p = 0; p < count; ++p) {
      const PackPair scaled{sums[c][2 * p] * scale, sums[c][2 * p + 1] * scale};
      storePair(out[c] + p * pairLanes, mixed<Element>(scaled));
    }
  }
}

template <int panels, unsigned rows, typename Element>
void addTileFrom(const Element* panel, std::uint64_t stride, const Stretch& stretch,
                 const double* const* row, double* const* out, std::uint64_t sample, double unit) {
  double* to[rows];
  for (unsigned c = 0; c < rows; ++c) to[c] = out[c] + sample;
  addTile<panels, rows>(panel, stride, stretch, row, to, unit);
}

template <int panels, typename Element>
void multiplyPanels(const Element* panel, std::uint64_t length, const double* const* rows,
                    double* const* out, unsigned count, std::uint64_t sample, double unit) {
  constexpr unsigned most = panels == 1 ? rowsPerPass : 1;
  const std::uint64_t stride = length * panelSamples;
  std::uint64_t begin = 0;
  do {
    const bool last = length - begin <= depth;
    const Stretch stretch{begin, last ? length : begin + depth, begin == 0, last};
    unsigned c = 0;
    for (; c + most <= count; c += most)
      addTileFrom<panels, most>(panel, stride, stretch, rows + c, out + c, sample, unit);
    if constexpr (most > 4)
      for (; c + 4 <= count; c += 4)
        addTileFrom<panels, 4>(panel, stride, stretch, rows + c, out + c, sample, unit);
    if constexpr (most > 2)
      for (; c + 2 <= count; c += 2)
        addTileFrom<panels, 2>(panel, stride, stretch, rows + c, out + c, sample, unit);
    for (; c < count; ++c)
      addTileFrom<panels, 1>(panel, stride, stretch, rows + c, out + c, sample, unit);
    begin = stretch.end;
  } while (begin < length);
}

template <typename Element>
void multiply(const Element* panels, std::uint64_t panelCount, std::uint64_t length,
              const double* const* rows, double* const* out, unsigned count, double unit) {
  const std::uint64_t stride = length * panelSamples;
  std::uint64_t p = 0;
  // One row alone has too few sums to keep the multipliers busy, so it takes two panels at once.
  if (count == 1)
    for (; p + 2 <= panelCount; p += 2)
      multiplyPanels<2>(panels + p * stride, length, rows, out, count, p * panelSamples, unit);
  for (; p < panelCount; ++p)
    multiplyPanels<1>(panels + p * stride, length, rows, out, count, p * panelSamples, unit);
}

}  // namespace

extern const RowProducts rowProductTable;
const RowProducts rowProductTable{multiply<double>, multiply<std::int32_t>};

}  // namespace ZEL_ISA
}  // namespace zelsvm
