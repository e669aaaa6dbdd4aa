#include "platform/host/fault_injection.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

std::uint64_t remaining = 0;  // allocations until the fault; 0 when there is none
FaultExtent faultExtent = FaultExtent::once;

}  // namespace

AllocationFault::AllocationFault(std::uint64_t nth, FaultExtent extent) {
  remaining = nth;
  faultExtent = extent;
}

AllocationFault::~AllocationFault() { remaining = 0; }

bool AllocationFault::strikes() {
  if (remaining == 0) return false;
  if (remaining > 1) {
    --remaining;
    return false;
  }
  if (faultExtent == FaultExtent::once) remaining = 0;
  return true;
}

}  // namespace zel::inline ZEL_PLATFORM
