// Library objects behind opaque handles.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace zel {

// Owns the objects and knows which handles are alive, so that null, foreign and destroyed handles
// are refused. Few live at once; the search is linear. Plain descriptors come and go with every
// product, so theirs are kept for the next one. Any thread may call.
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
    const std::scoped_lock locked(lock);
    if (spare.empty()) {
      owned.push_back(std::make_unique<T>(std::move(object)));
    } else {
      *spare.back() = std::move(object);
      owned.push_back(std::move(spare.back()));
      spare.pop_back();
    }
    return owned.back().get();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }

  [[nodiscard]] bool has(const T* handle) const {
    const std::scoped_lock locked(lock);
    return find(handle) != owned.end();
  }

  // False for a handle that is not alive.
  bool remove(const T* handle) {
    const std::scoped_lock locked(lock);
    const auto place = find(handle);
    if (place == owned.end()) return false;
    if constexpr (std::is_trivially_destructible_v<T>)
      spare.push_back(std::move(owned[static_cast<std::size_t>(place - owned.begin())]));
    owned.erase(place);
    return true;
  }

 private:
  [[nodiscard]] auto find(const T* handle) const {
    return std::find_if(owned.begin(), owned.end(),
                        [handle](const auto& object) { return object.get() == handle; });
  }

  mutable std::mutex lock;  // of what follows
  std::vector<std::unique_ptr<T>> owned;
  std::vector<std::unique_ptr<T>> spare;
};

template <typename T>
bool isAlive(const T* handle) {
  return LiveObjects<T>::instance().has(handle);
}

}  // namespace zel
