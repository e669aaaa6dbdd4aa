// Kernel rows on the device, kept by least recent use.
#pragma once

#include <cstdint>
#include <vector>

#include "zeldplus/inc/zelvectors.h"

namespace zelsvm::inline ZEL_PLATFORM {

// One slot: when it was last used and whose kernel row it holds. A guess is older than any used
// row.
struct MRUEntry {
  std::uint64_t stamp;
  std::uint64_t row;
};

// Bytes that a cache size in MB stands for. It is a 32-bit number: 4096 MB wrap to 0.
constexpr std::uint32_t cacheBudget(std::uint64_t megabytes) {
  return static_cast<std::uint32_t>((megabytes & 0xfff) << 20);
}

// Slots of pitch elements, at least 16 and at most one per sample; slots 0 … used - 1 are filled,
// with distinct rows and stamps. It manages memory only and never computes kernel values.
template <typename T>
class MRUCache {
 public:
  virtual ~MRUCache() = default;

  // Makes room for rows of sampleCount elements within cacheSize MB and half of the free device
  // memory, of which this is one of `sharers` caches, and empties the cache. Throws
  // RuntimeException when memory runs out.
  void initialize(std::uint64_t sampleCount, std::uint64_t cacheSize, unsigned sharers = 1);
  // The row's slot, renewed as the most recently used, or null. Throws RuntimeException for a row
  // number out of range.
  T* query(std::uint64_t row);
  // A slot that now belongs to a row that is not cached, its contents stale: an unused one or else
  // the least recently used. Throws RuntimeException for a row number out of range.
  T* grab(std::uint64_t row);
  // The same for a row that nobody has asked for yet: among the rows it may take the place of is
  // the oldest guess once guesses fill a quarter of the slots, before that the least recently used
  // row.
  T* grabGuess(std::uint64_t row);
  // Forgets all rows, so that the buffer may be written as a whole.
  void clear();

  [[nodiscard]] std::uint64_t slotCount() const { return entries.size(); }
  [[nodiscard]] std::uint64_t slotPitch() const { return pitch; }
  [[nodiscard]] zel::DeviceVector<T>& storage() { return buffer; }
  // By row: 0 for those that are not cached.
  [[nodiscard]] const std::vector<std::uint32_t>& cachedRows() const { return slotOfRow; }
  // Guesses whose row was asked for before they had to go.
  [[nodiscard]] std::uint64_t usedGuesses() const { return guessesUsed; }

 private:
  [[nodiscard]] std::uint64_t slotsWithin(std::uint64_t cacheSize, unsigned sharers) const;
  [[nodiscard]] std::uint64_t oldest(std::uint64_t leastStamp) const;
  [[nodiscard]] static bool isGuess(const MRUEntry& entry);
  T* fill(std::uint64_t slot, std::uint64_t row, std::uint64_t stamp);

  HostVector<MRUEntry> entries;
  std::uint64_t sampleCount = 0;
  std::uint64_t pitch = 0;
  std::uint64_t used = 0;
  std::uint64_t clock = 0;
  std::uint64_t guessClock = 0;
  std::uint64_t guesses = 0;  // slots that hold one
  std::uint64_t guessesUsed = 0;
  zel::DeviceVector<T> buffer;
  std::vector<std::uint32_t> slotOfRow;  // slot + 1 of each cached row, 0 for the others
};

}  // namespace zelsvm::inline ZEL_PLATFORM
