// Which kernel rows a cache holds and in which of its slots, kept by least recent use.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace zelsvm {

// One slot: when it was last used and whose kernel row it holds.
struct MRUEntry {
  std::uint64_t stamp;
  std::uint64_t row;
};

// Bytes that a row cache may take: its size in MB or half of the free memory, whichever is less,
// divided among the caches that share it.
std::uint64_t rowCacheBytes(std::uint64_t megabytes, std::uint64_t freeBytes, unsigned sharers);

// Slots of slotBytes each that so many bytes hold: one per row if all rows fit, else a multiple of
// 16. There are at least 16.
std::uint64_t rowSlotCount(std::uint64_t rows, std::uint64_t slotBytes, std::uint64_t bytes);

// Has no memory for rows. Slots 0 … used - 1 are filled, with distinct rows and stamps.
class RowSlots {
 public:
  // Empties all slots and sets their number.
  void assign(std::uint64_t rows, std::uint64_t slots);
  // The row's slot, renewed as the most recently used. Throws RuntimeException for a row number out
  // of range, as all of these do.
  std::optional<std::uint64_t> query(std::uint64_t row);
  // The slot that a row which has none gets: an unused one or else the least recently used. What it
  // holds is stale.
  std::uint64_t grab(std::uint64_t row);
  // Forgets all rows.
  void clear();

  [[nodiscard]] std::uint64_t count() const { return entries.size(); }

 private:
  // Of the filled slots the one least recently used.
  [[nodiscard]] std::uint64_t oldest() const;

  std::vector<MRUEntry> entries;
  std::vector<std::uint32_t> slotOfRow;  // slot + 1 of those that have one, 0 for the others
  std::uint64_t used = 0;
  std::uint64_t clock = 0;
};

}  // namespace zelsvm
