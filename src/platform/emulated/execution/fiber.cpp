// The checks of the fortified library take a jump to another stack for a fault.
#undef _FORTIFY_SOURCE

#include "platform/emulated/execution/fiber.h"

#ifdef ZEL_RACES_SOUGHT
extern "C" {
void* __tsan_get_current_fiber();
void* __tsan_create_fiber(unsigned flags);
void __tsan_destroy_fiber(void* fiber);
void __tsan_switch_to_fiber(void* fiber, unsigned flags);
}
#elif defined(__SANITIZE_ADDRESS__)
extern "C" {
void __sanitizer_start_switch_fiber(void** fakeStack, const void* stack, std::size_t bytes);
void __sanitizer_finish_switch_fiber(void* fakeStack, const void** stack, std::size_t* bytes);
}
#endif

namespace zel::device {
namespace {

thread_local Fiber* starting = nullptr;

}  // namespace

Fiber::Fiber(void* stack, std::size_t stackBytes, Body body, void* argument)
    : stack(stack), stackBytes(stackBytes), body(body), argument(argument) {
  ::getcontext(&context);
  context.uc_stack.ss_sp = stack;
  context.uc_stack.ss_size = stackBytes;
  context.uc_link = nullptr;
  ::makecontext(&context, run, 0);
#ifdef ZEL_RACES_SOUGHT
  self = __tsan_create_fiber(0);
#endif
}

Fiber::~Fiber() {
#ifdef ZEL_RACES_SOUGHT
  __tsan_destroy_fiber(self);
#endif
}

void Fiber::resume() {
  starting = this;
  enter();
}

void Fiber::suspend() { leave(); }

void Fiber::run() {
  Fiber& fiber = *starting;
#if !defined(ZEL_RACES_SOUGHT) && defined(__SANITIZE_ADDRESS__)
  __sanitizer_finish_switch_fiber(nullptr, &fiber.ownerStack, &fiber.ownerStackBytes);
#endif
  fiber.body(fiber.argument);
  fiber.ended = true;
  fiber.leave();
}

#ifdef ZEL_RACES_SOUGHT

namespace {
constexpr unsigned withoutOrder = 1;
}

void Fiber::enter() {
  ownerSelf = __tsan_get_current_fiber();
  __tsan_switch_to_fiber(self, withoutOrder);
  ::swapcontext(&ownerContext, &context);
}

void Fiber::leave() {
  __tsan_switch_to_fiber(ownerSelf, withoutOrder);
  ::swapcontext(&context, &ownerContext);
}

#elif defined(__SANITIZE_ADDRESS__)

void Fiber::enter() {
  __sanitizer_start_switch_fiber(&ownerSelf, stack, stackBytes);
  ::swapcontext(&ownerContext, &context);
  __sanitizer_finish_switch_fiber(ownerSelf, nullptr, nullptr);
}

void Fiber::leave() {
  __sanitizer_start_switch_fiber(ended ? nullptr : &self, ownerStack, ownerStackBytes);
  ::swapcontext(&context, &ownerContext);
  __sanitizer_finish_switch_fiber(self, &ownerStack, &ownerStackBytes);
}

#else

void Fiber::enter() {
  if (_setjmp(ownerPlace) != 0) return;
  if (started) _longjmp(place, 1);
  started = true;
  ::setcontext(&context);
}

void Fiber::leave() {
  if (_setjmp(place) == 0) _longjmp(ownerPlace, 1);
}

#endif

}  // namespace zel::device
