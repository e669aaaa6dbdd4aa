#include "zeldplus/zelsvm/engine/host/row_products.h"

#include <cstddef>

#include "zeldplus/inc/zelrule.h"
#include "zeldplus/zelsvm/engine/host/isa/pack.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace ZEL_ISA {
namespace {

constexpr int packs = static_cast<int>(panelSamples) / lanes;
constexpr std::ptrdiff_t laneStep = lanes;
// Rows that one pass over a panel serves: their sums fill the registers.
constexpr unsigned rowsPerPass = lanes == 8 ? 8 : lanes == 4 ? 3 : 1;
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

// Adds a stretch of `panels` panels, stride apart, to the sums in out; the last one ends them.
template <int panels, unsigned rows, typename Element>
ZEL_RULE void addTile(const Element* panel, std::uint64_t stride, const Stretch& stretch,
                      const double* const* row, double* const* out, double unit) {
  Pack sums[rows][panels * packs];
  for (unsigned c = 0; c < rows; ++c)
    for (int p = 0; p < panels * packs; ++p)
      sums[c][p] = stretch.first ? Pack{} : load(out[c] + p * laneStep);
  for (std::uint64_t j = stretch.begin; j < stretch.end; ++j) {
    for (std::uint64_t p = 0; p < panels; ++p) fetch(panel + p * stride + j * panelSamples);
    Pack factors[rows];
    for (unsigned c = 0; c < rows; ++c) factors[c] = splat(row[c][j]);
    for (int p = 0; p < panels * packs; ++p) {
      const Pack x = load(panel + static_cast<std::uint64_t>(p / packs) * stride +
                          j * panelSamples + static_cast<std::uint64_t>(p % packs * lanes));
      for (unsigned c = 0; c < rows; ++c) sums[c][p] = multiplyAdd(factors[c], x, sums[c][p]);
    }
  }
  const Pack scale = splat(stretch.last ? unit : 1.0);
  for (unsigned c = 0; c < rows; ++c)
    for (int p = 0; p < panels * packs; ++p) store(out[c] + p * laneStep, sums[c][p] * scale);
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
}  // namespace zelsvm::inline ZEL_PLATFORM
