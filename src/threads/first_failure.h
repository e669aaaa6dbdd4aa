// Failures within a loop that several threads share.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <limits>
#include <mutex>
#include <utility>

#include "threads/parallel.h"

namespace zel {

// Keeps the exception of the lowest item, which is the one that a loop on one thread would end
// with, and leaves out items behind it.
class FirstFailure {
 public:
  // Calls body() for this item.
  template <typename Body>
  void guard(std::uint64_t item, const Body& body) noexcept {
    if (item > failed.load(std::memory_order_relaxed)) return;
    try {
      body();
    } catch (...) {
      keep(item, std::current_exception());
    }
  }

  // Once the loop is over: throws what was kept, if anything was.
  void rethrow() {
    if (failure) std::rethrow_exception(std::exchange(failure, nullptr));
  }

 private:
  void keep(std::uint64_t item, std::exception_ptr exception) {
    const std::scoped_lock locked(lock);
    if (item >= failed) return;
    failed = item;
    failure = std::move(exception);
  }

  std::atomic<std::uint64_t> failed = std::numeric_limits<std::uint64_t>::max();
  std::exception_ptr failure;
  std::mutex lock;
};

// forEachChunk for single items and a body(item) that may throw: the exception of the lowest item
// that throws comes out.
template <typename Body>
void forEachGuarded(std::uint64_t count, double nanosecondsPerItem, const Body& body) {
  FirstFailure failure;
  forEachChunk(count, 1, nanosecondsPerItem, [&](std::uint64_t item, std::uint64_t /*next*/) {
    failure.guard(item, [&] { body(item); });
  });
  failure.rethrow();
}

}  // namespace zel
