#include "zeldplus/zelsvm/engine/mru_cache.h"

#include <algorithm>

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t slotStep = 16;

}  // namespace

template <typename T>
std::uint64_t MRUCache<T>::slotsWithin(std::uint64_t cacheSize) const {
  // Compared as 32-bit numbers: a budget of 4096 MB wraps to 0.
  const std::uint64_t available = (zel::freeDeviceMemory() + buffer.capacity()) >> 1;
  const std::uint64_t budget =
      std::min(static_cast<std::uint32_t>(cacheSize << 20), static_cast<std::uint32_t>(available));
  const std::uint64_t slotBytes = pitch * sizeof(T);
  if (sampleCount * slotBytes <= budget) return sampleCount;
  const std::uint64_t slots = budget / slotBytes / slotStep * slotStep;
  return slots < slotStep ? slotStep : std::min(slots, sampleCount);
}

template <typename T>
void MRUCache<T>::initialize(std::uint64_t newSampleCount, std::uint64_t cacheSize) {
  sampleCount = newSampleCount;
  pitch = zel::roundedCapacity(sampleCount);
  const std::uint64_t slots = slotsWithin(cacheSize);
  buffer.resize(slots * pitch);
  entries.resize(slots);
  slotOfRow.assign(sampleCount, 0);
  used = 0;
  clock = 0;
}

template <typename T>
T* MRUCache<T>::query(std::uint64_t row) {
  if (row >= sampleCount) throw zel::RuntimeException("Unexpected kernel cache query request.");
  const std::uint64_t slot = slotOfRow[row];
  if (slot == 0) return nullptr;
  entries.at(slot - 1)->stamp = clock++;
  return buffer.data() + (slot - 1) * pitch;
}

template <typename T>
T* MRUCache<T>::grab(std::uint64_t row) {
  if (row >= sampleCount) throw zel::RuntimeException("Unexpected kernel cache grab request.");
  const bool full = used == slotCount();
  const std::uint64_t slot = full ? leastRecentlyUsed() : used++;
  if (full) slotOfRow[entries[slot].row] = 0;
  entries.set(slot, {clock++, row});
  slotOfRow[row] = static_cast<std::uint32_t>(slot + 1);
  return buffer.data() + slot * pitch;
}

template <typename T>
std::uint64_t MRUCache<T>::leastRecentlyUsed() const {
  const MRUEntry* const first = entries.data();
  const auto* oldest = std::min_element(
      first, first + used, [](const MRUEntry& a, const MRUEntry& b) { return a.stamp < b.stamp; });
  return static_cast<std::uint64_t>(oldest - first);
}

template <typename T>
void MRUCache<T>::clear() {
  for (std::uint64_t slot = 0; slot < used; ++slot) slotOfRow[entries[slot].row] = 0;
  used = 0;
}

template class MRUCache<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
