// Lines of numbers, formatted by all threads and written in order.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "base/output/text_output.h"
#include "threads/first_failure.h"

namespace zelsvm {

// Threads format pieces of so many numbers, and no more pieces than that are held as text.
inline constexpr std::uint64_t pieceNumbers = 2048;
inline constexpr std::uint64_t mostPieces = 16;

// Calls putRow(row, text) for each row, on any thread, and hands the texts to the output in the
// rows' order. rowNumbers is about how many numbers a row has; rows of very many are handed over as
// they are formatted.
template <typename PutRow>
void putRows(std::uint64_t rows, std::uint64_t rowNumbers, zel::TextOutput& output,
             const PutRow& putRow) {
  const std::uint64_t pieceRows = std::max<std::uint64_t>(1, pieceNumbers / rowNumbers);
  const std::uint64_t pieceLength = pieceRows * rowNumbers;
  if (pieceLength > mostPieces * pieceNumbers / 2) {
    for (std::uint64_t row = 0; row < rows; ++row) putRow(row, output);
    return;
  }
  const double nanoseconds = 40.0 * static_cast<double>(pieceLength);
  std::vector<std::string> pieces(std::min(mostPieces, mostPieces * pieceNumbers / pieceLength));
  for (std::uint64_t first = 0; first < rows; first += pieceRows * pieces.size()) {
    const std::uint64_t left = (rows - first - 1) / pieceRows + 1;
    const std::uint64_t count = std::min<std::uint64_t>(pieces.size(), left);
    zel::forEachGuarded(count, nanoseconds, [&](std::uint64_t piece) {
      pieces[piece].clear();
      zel::TextOutput text(pieces[piece]);
      const std::uint64_t begin = first + piece * pieceRows;
      const std::uint64_t end = std::min(rows, begin + pieceRows);
      for (std::uint64_t row = begin; row < end; ++row) putRow(row, text);
      text.flush();
    });
    for (std::uint64_t piece = 0; piece < count; ++piece) output.put(pieces[piece]);
  }
}

}  // namespace zelsvm
