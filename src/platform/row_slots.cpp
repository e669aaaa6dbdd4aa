#include "platform/row_slots.h"

#include <algorithm>
#include <limits>

#include "base/errors.h"

namespace zelsvm {
namespace {

constexpr std::uint64_t slotStep = 16;
// Stamps below are those of guesses.
constexpr std::uint64_t firstUse = std::uint64_t{1} << 63;
constexpr std::uint64_t guessShare = 4;

bool isGuess(const MRUEntry& entry) { return entry.stamp < firstUse; }

}  // namespace

std::uint64_t rowCacheBytes(std::uint64_t megabytes, std::uint64_t freeBytes, unsigned sharers) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max() >> 20;
  return std::min(std::min(megabytes, most) << 20, freeBytes / 2) / sharers;
}

std::uint64_t rowSlotCount(std::uint64_t rows, std::uint64_t slotBytes, std::uint64_t bytes) {
  const std::uint64_t fitting = bytes / slotBytes;
  if (rows <= fitting) return rows;
  return std::max(fitting / slotStep * slotStep, slotStep);
}

void RowSlots::assign(std::uint64_t rows, std::uint64_t slots) {
  entries.resize(slots);
  slotOfRow.assign(rows, 0);
  used = 0;
  clock = firstUse;
  guessClock = 0;
  guesses = 0;
  guessesUsed = 0;
}

std::optional<std::uint64_t> RowSlots::query(std::uint64_t row) {
  if (row >= slotOfRow.size())
    throw zel::RuntimeException("Unexpected kernel cache query request.");
  if (slotOfRow[row] == 0) return std::nullopt;
  const std::uint64_t slot = slotOfRow[row] - 1;
  if (isGuess(entries[slot])) {
    --guesses;
    ++guessesUsed;
  }
  entries[slot].stamp = clock++;
  return slot;
}

std::uint64_t RowSlots::grab(std::uint64_t row) {
  if (row >= slotOfRow.size()) throw zel::RuntimeException("Unexpected kernel cache grab request.");
  return fill(used < count() ? used : oldest(0), row, clock++);
}

std::uint64_t RowSlots::grabGuess(std::uint64_t row) {
  if (row >= slotOfRow.size()) throw zel::RuntimeException("Unexpected kernel cache grab request.");
  const bool mayGrow = guesses < count() / guessShare;
  const std::uint64_t slot = used < count() ? used : oldest(mayGrow ? firstUse : 0);
  ++guesses;
  return fill(slot, row, guessClock++);
}

std::uint64_t RowSlots::fill(std::uint64_t slot, std::uint64_t row, std::uint64_t stamp) {
  if (slot < used) {
    slotOfRow[entries[slot].row] = 0;
    if (isGuess(entries[slot])) --guesses;
  } else {
    ++used;
  }
  entries[slot] = {stamp, row};
  slotOfRow[row] = static_cast<std::uint32_t>(slot + 1);
  return slot;
}

// The slot with the smallest stamp that is at least leastStamp.
std::uint64_t RowSlots::oldest(std::uint64_t leastStamp) const {
  const auto end = entries.begin() + static_cast<std::ptrdiff_t>(used);
  const auto found = std::min_element(entries.begin(), end, [=](const auto& a, const auto& b) {
    return a.stamp - leastStamp < b.stamp - leastStamp;  // smaller ones wrap to the end
  });
  return static_cast<std::uint64_t>(found - entries.begin());
}

void RowSlots::clear() {
  for (std::uint64_t slot = 0; slot < used; ++slot) slotOfRow[entries[slot].row] = 0;
  used = 0;
  guesses = 0;
}

}  // namespace zelsvm
