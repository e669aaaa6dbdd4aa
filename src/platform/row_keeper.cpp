#include "platform/row_keeper.h"

namespace zelsvm {

void RowKeeper::assign(std::uint64_t rows, std::uint64_t newMost) {
  slots.clear();
  slotOfRow.assign(rows, noSlot);
  most = newMost;
  round = 0;
  hand = 0;
  isFull = false;
}

std::uint32_t RowKeeper::find(std::uint64_t row, bool keep) {
  const std::uint32_t slot = slotOfRow[row];
  if (slot == noSlot) return noSlot;
  slots[slot].round = round;
  slots[slot].keep = keep;
  return slot;
}

// Rows that nobody wants to keep make room, in turn; one that is to be kept never does: the rows
// of free variables are asked for over and over, and taking turns would lose all of them.
std::uint32_t RowKeeper::grab(std::uint64_t row) {
  if (slots.size() < most) {
    slotOfRow[row] = static_cast<std::uint32_t>(slots.size());
    slots.push_back({row, round, true});
    return slotOfRow[row];
  }
  for (std::uint64_t looks = 0; !isFull && looks < slots.size(); ++looks) {
    const std::uint64_t slot = hand;
    hand = hand + 1 == slots.size() ? 0 : hand + 1;
    if (slots[slot].keep || slots[slot].round == round) continue;
    slotOfRow[slots[slot].row] = noSlot;
    slots[slot] = {row, round, true};
    slotOfRow[row] = static_cast<std::uint32_t>(slot);
    return slotOfRow[row];
  }
  isFull = true;
  return noSlot;
}

}  // namespace zelsvm
