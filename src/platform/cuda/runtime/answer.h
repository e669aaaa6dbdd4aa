// Answers of kernels that the host awaits without a copy.
#pragma once

#include <cuda_runtime.h>

#include <atomic>
#include <cstdint>
#include <cstring>

#include "platform/cuda/runtime/device_vector.h"

namespace zel {

// Whether launches are still under way. Throws RuntimeException where one has failed.
bool isRunning();
[[noreturn]] void throwUnanswered();

// A value of a kernel, followed by the number of the launch that it answers.
template <typename T>
struct Ticketed {
  T value;
  unsigned long long ticket;
};

// Lies in page-locked memory of the host, which devices see at the same address. A kernel gives the
// last answer that is awaited.
template <typename T>
class Answer {
 public:
  Answer() : memory(1) { std::memset(memory.span().data(), 0, sizeof(Ticketed<T>)); }

  [[nodiscard]] Ticketed<T>* place() { return memory.span().data(); }
  // The number of the next launch that will answer.
  unsigned long long nextTicket() { return ++last; }
  // The answer to the last of them.
  const T& await() {
    constexpr unsigned looksPerCheck = 1 << 12;
    while (!isHere(looksPerCheck))
      if (!isRunning() && !isHere(1)) throwUnanswered();
    return place()->value;
  }

 private:
  bool isHere(unsigned looks) {
    const std::atomic_ref<unsigned long long> ticket(place()->ticket);
    for (unsigned k = 0; k < looks; ++k)
      if (ticket.load(std::memory_order_acquire) == last) return true;
    return false;
  }

  PinnedVector<Ticketed<T>> memory;
  unsigned long long last = 0;
};

}  // namespace zel
