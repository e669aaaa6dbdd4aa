#include "support/allocation_fault.h"

#include <atomic>

namespace zeltest {
namespace {

std::atomic<std::uint64_t> left = 0;  // allocations up to the one that fails; 0 for none
std::atomic<bool> failsOn = false;

}  // namespace

AllocationFault::AllocationFault(std::uint64_t nth, FaultExtent extent) {
  failsOn = extent == FaultExtent::fromThenOn;
  left = nth;
}

AllocationFault::~AllocationFault() { left = 0; }

bool AllocationFault::strikes() {
  std::uint64_t before = left;
  while (before > 1 && !left.compare_exchange_weak(before, before - 1)) {
  }
  if (before != 1) return false;
  if (!failsOn) left = 0;
  return true;
}

}  // namespace zeltest
