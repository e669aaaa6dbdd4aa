#include "platform/emulated/execution/stacks.h"

#include <sys/mman.h>

#include <algorithm>
#include <mutex>
#include <new>
#include <vector>

#include "platform/emulated/execution/race_model.h"

namespace zel::device {
namespace {

struct Spare {
  std::size_t count;
  unsigned char* memory;
};

std::mutex lock;  // of the list
std::vector<Spare>& spares() {
  static auto* const list = new std::vector<Spare>;
  return *list;
}

unsigned char* spareMemory(std::size_t count) {
  const std::scoped_lock locked(lock);
  const auto found = std::find_if(spares().begin(), spares().end(),
                                  [count](const Spare& spare) { return spare.count == count; });
  if (found == spares().end()) return nullptr;
  unsigned char* const memory = found->memory;
  spares().erase(found);
  return memory;
}

unsigned char* newMemory(std::size_t count) {
  void* const memory = ::mmap(nullptr, count * stackBytes, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return static_cast<unsigned char*>(memory);
}

}  // namespace

Stacks::Stacks(std::size_t count)
    : count(count), memory(racesAreSought ? nullptr : spareMemory(count)) {
  if (memory == nullptr) memory = newMemory(count);
}

Stacks::~Stacks() {
  if (racesAreSought) {
    ::munmap(memory, count * stackBytes);
    return;
  }
  const std::scoped_lock locked(lock);
  spares().push_back({count, memory});
}

}  // namespace zel::device
