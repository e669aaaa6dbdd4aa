// Lets tests see what happens when memory runs out.
#pragma once

#include <cstdint>

namespace zeltest {

enum class FaultExtent { once, fromThenOn };

// While this lives, the nth allocation of the machine's memory after its making fails (1 is the
// next one), alone or with all that follow. One at a time, made while no other thread allocates.
class AllocationFault {
 public:
  explicit AllocationFault(std::uint64_t nth, FaultExtent extent = FaultExtent::once);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;

  // Counts one allocation; true if it is to fail.
  static bool strikes();
};

}  // namespace zeltest
