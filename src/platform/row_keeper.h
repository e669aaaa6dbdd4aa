// Which kernel rows the working-set method keeps in its cache, and in which slots.
#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace zelsvm {

// Has no memory for rows. Rows to be kept, and those of the present round, stay until they are to
// be kept no more.
class RowKeeper {
 public:
  static constexpr std::uint32_t noSlot = std::numeric_limits<std::uint32_t>::max();

  void assign(std::uint64_t rows, std::uint64_t newMost);
  // Begins a round.
  void beginRound() {
    ++round;
    isFull = false;
  }
  // The row's slot or noSlot; keep says what it is from now on.
  std::uint32_t find(std::uint64_t row, bool keep);
  // A slot for a row that has none and is to be kept; noSlot where none is free for it.
  std::uint32_t grab(std::uint64_t row);

 private:
  struct Slot {
    std::uint64_t row;
    std::uint64_t round;  // in which it was used last
    bool keep;
  };

  std::vector<Slot> slots;
  std::vector<std::uint32_t> slotOfRow;
  std::uint64_t most = 0;
  std::uint64_t round = 0;
  std::uint64_t hand = 0;  // where the search for a row that may go continues
  bool isFull = false;     // none was found in this round
};

}  // namespace zelsvm
