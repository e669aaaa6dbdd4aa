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

// Adds elements 0 … length - 1 of `panels` panels, stride apart, to the sums in out.
template <int panels, unsigned rows>
ZEL_RULE void addTile(const double* panel, std::uint64_t stride, std::uint64_t length,
                      const double* const* row, double* const* out, bool first) {
  Pack sums[rows][panels * packs];
  for (unsigned c = 0; c < rows; ++c)
    for (int p = 0; p < panels * packs; ++p)
      sums[c][p] = first ? Pack{} : load(out[c] + p * laneStep);
  for (std::uint64_t j = 0; j < length; ++j) {
    Pack factors[rows];
    for (unsigned c = 0; c < rows; ++c) factors[c] = splat(row[c][j]);
    for (int p = 0; p < panels * packs; ++p) {
      const Pack x = load(panel + static_cast<std::uint64_t>(p / packs) * stride +
                          j * panelSamples + static_cast<std::uint64_t>(p % packs * lanes));
      for (unsigned c = 0; c < rows; ++c) sums[c][p] = multiplyAdd(factors[c], x, sums[c][p]);
    }
  }
  for (unsigned c = 0; c < rows; ++c)
    for (int p = 0; p < panels * packs; ++p) store(out[c] + p * laneStep, sums[c][p]);
}

template <int panels, unsigned rows>
void addTileFrom(const double* panel, std::uint64_t stride, std::uint64_t begin, std::uint64_t end,
                 const double* const* row, double* const* out, std::uint64_t sample) {
  const double* from[rows];
  double* to[rows];
  for (unsigned c = 0; c < rows; ++c) {
    from[c] = row[c] + begin;
    to[c] = out[c] + sample;
  }
  addTile<panels, rows>(panel + begin * panelSamples, stride, end - begin, from, to, begin == 0);
}

template <int panels>
void multiplyPanels(const double* panel, std::uint64_t length, const double* const* rows,
                    double* const* out, unsigned count, std::uint64_t sample) {
  constexpr unsigned most = panels == 1 ? rowsPerPass : 1;
  const std::uint64_t stride = length * panelSamples;
  std::uint64_t begin = 0;
  do {
    const std::uint64_t end = length - begin < depth ? length : begin + depth;
    unsigned c = 0;
    for (; c + most <= count; c += most)
      addTileFrom<panels, most>(panel, stride, begin, end, rows + c, out + c, sample);
    if constexpr (most > 4)
      for (; c + 4 <= count; c += 4)
        addTileFrom<panels, 4>(panel, stride, begin, end, rows + c, out + c, sample);
    if constexpr (most > 2)
      for (; c + 2 <= count; c += 2)
        addTileFrom<panels, 2>(panel, stride, begin, end, rows + c, out + c, sample);
    for (; c < count; ++c)
      addTileFrom<panels, 1>(panel, stride, begin, end, rows + c, out + c, sample);
    begin = end;
  } while (begin < length);
}

}  // namespace

void rowProducts(const double* panels, std::uint64_t panelCount, std::uint64_t length,
                 const double* const* rows, double* const* out, unsigned count) {
  const std::uint64_t stride = length * panelSamples;
  std::uint64_t p = 0;
  // One row alone has too few sums to keep the multipliers busy, so it takes two panels at once.
  if (count == 1)
    for (; p + 2 <= panelCount; p += 2)
      multiplyPanels<2>(panels + p * stride, length, rows, out, count, p * panelSamples);
  for (; p < panelCount; ++p)
    multiplyPanels<1>(panels + p * stride, length, rows, out, count, p * panelSamples);
}

}  // namespace ZEL_ISA
}  // namespace zelsvm::inline ZEL_PLATFORM
