#include "zeldplus/zelsvm/engine/mru_cache.h"

#include <algorithm>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t slotStep = 16;
// Stamps below are those of guesses.
constexpr std::uint64_t firstUse = std::uint64_t{1} << 63;
constexpr std::uint64_t guessShare = 4;

}  // namespace

template <typename T>
std::uint64_t MRUCache<T>::slotsWithin(std::uint64_t cacheSize, unsigned sharers) const {
  // Compared as 32-bit numbers.
  const std::uint64_t available = (zel::freeDeviceMemory() + buffer.capacity()) >> 1;
  const std::uint64_t budget =
      std::min(cacheBudget(cacheSize), static_cast<std::uint32_t>(available)) / sharers;
  const std::uint64_t slotBytes = pitch * sizeof(T);
  if (sampleCount * slotBytes <= budget) return sampleCount;
  const std::uint64_t slots = budget / slotBytes / slotStep * slotStep;
  return slots < slotStep ? slotStep : std::min(slots, sampleCount);
}

template <typename T>
void MRUCache<T>::initialize(std::uint64_t newSampleCount, std::uint64_t cacheSize,
                             unsigned sharers) {
  sampleCount = newSampleCount;
  pitch = zel::roundedCapacity(sampleCount);
  const std::uint64_t slots = slotsWithin(cacheSize, sharers);
  buffer.resize(slots * pitch);
  entries.resize(slots);
  slotOfRow.assign(sampleCount, 0);
  used = 0;
  clock = firstUse;
  guessClock = 0;
  guesses = 0;
  guessesUsed = 0;
}

template <typename T>
bool MRUCache<T>::isGuess(const MRUEntry& entry) {
  return entry.stamp < firstUse;
}

template <typename T>
T* MRUCache<T>::query(std::uint64_t row) {
  if (row >= sampleCount) throw zel::RuntimeException("Unexpected kernel cache query request.");
  const std::uint64_t slot = slotOfRow[row];
  if (slot == 0) return nullptr;
  MRUEntry& entry = *entries.at(slot - 1);
  if (isGuess(entry)) {
    --guesses;
    ++guessesUsed;
  }
  entry.stamp = clock++;
  return buffer.data() + (slot - 1) * pitch;
}

template <typename T>
T* MRUCache<T>::grab(std::uint64_t row) {
  if (row >= sampleCount) throw zel::RuntimeException("Unexpected kernel cache grab request.");
  return fill(used < slotCount() ? used : oldest(0), row, clock++);
}

template <typename T>
T* MRUCache<T>::grabGuess(std::uint64_t row) {
  if (row >= sampleCount) throw zel::RuntimeException("Unexpected kernel cache grab request.");
  const bool mayGrow = guesses < slotCount() / guessShare;
  const std::uint64_t slot = used < slotCount() ? used : oldest(mayGrow ? firstUse : 0);
  ++guesses;
  return fill(slot, row, guessClock++);
}

template <typename T>
T* MRUCache<T>::fill(std::uint64_t slot, std::uint64_t row, std::uint64_t stamp) {
  if (slot < used) {
    slotOfRow[entries[slot].row] = 0;
    if (isGuess(entries[slot])) --guesses;
  } else {
    ++used;
  }
  entries.set(slot, {stamp, row});
  slotOfRow[row] = static_cast<std::uint32_t>(slot + 1);
  return buffer.data() + slot * pitch;
}

// The slot with the smallest stamp that is at least leastStamp.
template <typename T>
std::uint64_t MRUCache<T>::oldest(std::uint64_t leastStamp) const {
  const MRUEntry* const first = entries.data();
  const auto* found = std::min_element(first, first + used, [=](const auto& a, const auto& b) {
    return a.stamp - leastStamp < b.stamp - leastStamp;  // smaller ones wrap to the end
  });
  return static_cast<std::uint64_t>(found - first);
}

template <typename T>
void MRUCache<T>::clear() {
  for (std::uint64_t slot = 0; slot < used; ++slot) slotOfRow[entries[slot].row] = 0;
  used = 0;
  guesses = 0;
}

template class MRUCache<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
