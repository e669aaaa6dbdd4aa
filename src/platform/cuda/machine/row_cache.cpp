#include "platform/cuda/machine/row_cache.h"

#include "platform/cuda/runtime/device.h"

namespace zelsvm {

template <typename T>
void MRUCache<T>::initialize(std::uint64_t sampleCount, std::uint64_t cacheSize, unsigned sharers) {
  pitch = zel::roundedCapacity(sampleCount);
  const std::uint64_t available = zel::freeDeviceMemory() + buffer.capacity();
  const std::uint64_t bytes = rowCacheBytes(cacheSize, available, sharers);
  slots.assign(sampleCount, rowSlotCount(sampleCount, pitch * sizeof(T), bytes));
  buffer.resize(slots.count() * pitch);
}

template <typename T>
T* MRUCache<T>::query(std::uint64_t row) {
  const auto slot = slots.query(row);
  return slot ? buffer.data() + *slot * pitch : nullptr;
}

template <typename T>
T* MRUCache<T>::grab(std::uint64_t row) {
  return buffer.data() + slots.grab(row) * pitch;
}

template <typename T>
T* MRUCache<T>::clear() {
  slots.clear();
  return buffer.data();
}

template class MRUCache<double>;

}  // namespace zelsvm
