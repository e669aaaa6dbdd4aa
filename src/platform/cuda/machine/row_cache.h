// Kernel rows on the device, kept by least recent use.
#pragma once

#include <cstdint>

#include "platform/cuda/runtime/device_vector.h"
#include "platform/row_slots.h"

namespace zelsvm {

// Slots of pitch elements, at least 16 and at most one per sample. It manages memory only and never
// computes kernel values.
template <typename T>
class MRUCache {
 public:
  virtual ~MRUCache() = default;

  // Makes room for rows of sampleCount elements within cacheSize MB and half of the free device
  // memory, of which this is one of `sharers` caches, and empties the cache. Throws
  // RuntimeException when memory runs out.
  void initialize(std::uint64_t sampleCount, std::uint64_t cacheSize, unsigned sharers);
  // The row's slot, renewed as the most recently used, or null. Throws RuntimeException for a row
  // number out of range.
  T* query(std::uint64_t row);
  // A slot that now belongs to a row that is not cached, its contents stale: an unused one or else
  // the least recently used. Throws RuntimeException for a row number out of range.
  T* grab(std::uint64_t row);
  // Forgets all rows and returns the buffer, which may then be written as a whole.
  T* clear();

  [[nodiscard]] std::uint64_t slotCount() const { return slots.count(); }
  [[nodiscard]] std::uint64_t slotPitch() const { return pitch; }

 private:
  RowSlots slots;
  std::uint64_t pitch = 0;
  zel::DeviceVector<T> buffer;
};

}  // namespace zelsvm
