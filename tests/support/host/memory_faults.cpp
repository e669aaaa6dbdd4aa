// The linker leads the vectors' allocator here.
#include <cerrno>
#include <cstddef>

#include "support/allocation_fault.h"

int reallyAllocate(void** memory, std::size_t alignment,
                   std::size_t bytes) asm("__real_posix_memalign");
// Seen by shared libraries, too, as the linker asks where they call the function of that name.
[[gnu::visibility("default")]] int allocate(void** memory, std::size_t alignment,
                                            std::size_t bytes) asm("__wrap_posix_memalign");

int allocate(void** memory, std::size_t alignment, std::size_t bytes) {
  return zeltest::AllocationFault::strikes() ? ENOMEM : reallyAllocate(memory, alignment, bytes);
}
