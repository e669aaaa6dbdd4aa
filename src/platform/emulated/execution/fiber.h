// A thread of execution that takes turns with its owner.
#pragma once

#include <setjmp.h>
#include <ucontext.h>

#include <cstddef>

namespace zel::device {

// To the thread sanitizer a thread of its own, which turns alone do not order. Stays on the thread
// that made it.
class Fiber {
 public:
  using Body = void (*)(void* argument);

  // The stack is the caller's and outlives the fiber.
  Fiber(void* stack, std::size_t stackBytes, Body body, void* argument);
  ~Fiber();
  Fiber(const Fiber&) = delete;
  Fiber& operator=(const Fiber&) = delete;

  // Runs the body until it suspends or ends. Called by the owner.
  void resume();
  // Gives the turn back to the owner. Called by the body.
  void suspend();
  [[nodiscard]] bool hasEnded() const { return ended; }

 private:
  static void run();
  void enter();
  void leave();

  void* stack;
  std::size_t stackBytes;
  Body body;
  void* argument;
  bool started = false;
  bool ended = false;
  ucontext_t context{};
  ucontext_t ownerContext{};
  // Jumps change the stack without a system call. Sanitizers do not follow them.
  jmp_buf place{};
  jmp_buf ownerPlace{};
  // What the sanitizers know the two by.
  void* self = nullptr;
  void* ownerSelf = nullptr;
  const void* ownerStack = nullptr;
  std::size_t ownerStackBytes = 0;
};

}  // namespace zel::device
