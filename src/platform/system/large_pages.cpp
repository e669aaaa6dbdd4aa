#include "platform/system/large_pages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace zel {

void preferLargePages(void* memory, std::size_t bytes) noexcept {
  constexpr std::size_t worthwhile = std::size_t{4} << 20;
  if (bytes < worthwhile) return;
  // Whole pages inside the block only.
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = (reinterpret_cast<std::uintptr_t>(memory) + page - 1) / page * page;
  const auto end = (reinterpret_cast<std::uintptr_t>(memory) + bytes) / page * page;
  const int before = errno;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
  errno = before;
}

}  // namespace zel
