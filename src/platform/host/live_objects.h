// Library objects behind opaque handles.
#pragma once

#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace zel::inline ZEL_PLATFORM {

// Owns the objects and knows which handles are alive, so that null, foreign and destroyed handles
// are refused. Few live at once; the search is linear.
template <typename T>
class LiveObjects {
 public:
  static LiveObjects& instance() {
    // Never destroyed: static objects may destroy their handles later.
    static auto* const objects = new LiveObjects;
    return *objects;
  }

  // Takes the object over; null when memory is out.
  T* add(T&& object) noexcept try {
    owned.push_back(std::make_unique<T>(std::move(object)));
    return owned.back().get();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }

  [[nodiscard]] bool has(const T* handle) const { return find(handle) != owned.end(); }

  // False for a handle that is not alive.
  bool remove(const T* handle) {
    const auto place = find(handle);
    if (place == owned.end()) return false;
    owned.erase(place);
    return true;
  }

 private:
  [[nodiscard]] auto find(const T* handle) const {
    return std::find_if(owned.begin(), owned.end(),
                        [handle](const auto& object) { return object.get() == handle; });
  }

  std::vector<std::unique_ptr<T>> owned;
};

template <typename T>
bool isAlive(const T* handle) {
  return LiveObjects<T>::instance().has(handle);
}

}  // namespace zel::inline ZEL_PLATFORM
