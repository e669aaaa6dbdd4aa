// The wish that a call's work should end, as all loops and solvers of the call see it.
#pragma once

#include <atomic>

namespace zel {

// Thrown where work has ended because it was wished so.
struct Stopped {};

// While it lives, the calling thread's work ends soon after the flag has become true: loops leave
// out what they have not begun and throw Stopped.
class StopScope {
 public:
  // The flag may be set by any thread. outer, if any, counts too: that of the thread which the
  // calling one works for. Both must outlive it.
  explicit StopScope(const std::atomic<bool>& flag, const StopScope* outer = current())
      : flag(&flag), outer(outer), before(here) {
    here = this;
  }
  ~StopScope() { here = before; }
  StopScope(const StopScope&) = delete;
  StopScope& operator=(const StopScope&) = delete;

  // Once it was true it stays so. For any thread.
  [[nodiscard]] bool isSet() const {
    if (isSeen()) return true;
    if (!flag->load(std::memory_order_relaxed) && (outer == nullptr || !outer->isSet()))
      return false;
    seen.store(true, std::memory_order_relaxed);
    return true;
  }
  // Whether isSet() has been true.
  [[nodiscard]] bool isSeen() const { return seen.load(std::memory_order_relaxed); }

  // The calling thread's; null without one.
  static const StopScope* current() { return here; }

  // Within a loop's body, which must not throw, nothing is stopped.
  class Pause {
   public:
    Pause() : before(here) { here = nullptr; }
    ~Pause() { here = before; }
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    const StopScope* before;
  };

 private:
  static inline thread_local const StopScope* here = nullptr;

  const std::atomic<bool>* flag;
  const StopScope* outer;
  const StopScope* before;
  mutable std::atomic<bool> seen = false;
};

}  // namespace zel
