// Stacks for the threads of a block.
#pragma once

#include <cstddef>

namespace zel::device {

inline constexpr std::size_t stackBytes = std::size_t{64} << 10;

// Where races are sought each block has memory of its own: its threads would meet those of the next
// block on it. Else the memory is kept for the next one.
class Stacks {
 public:
  // Throws std::bad_alloc.
  explicit Stacks(std::size_t count);
  ~Stacks();
  Stacks(const Stacks&) = delete;
  Stacks& operator=(const Stacks&) = delete;

  [[nodiscard]] void* stack(std::size_t k) const { return memory + k * stackBytes; }

 private:
  std::size_t count;
  unsigned char* memory;
};

}  // namespace zel::device
