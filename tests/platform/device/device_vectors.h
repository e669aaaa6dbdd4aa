// Device vectors to standard ones.
#pragma once

#include <vector>

#include "platform/cuda/runtime/device_vector.h"
#include "platform/device/device_array.h"

namespace zeltest {

template <typename T>
std::vector<T> valuesOf(const zel::DeviceVector<T>& vector) {
  std::vector<T> values(vector.size());
  vector.download(values);
  return values;
}

}  // namespace zeltest
