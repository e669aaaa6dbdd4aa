// What is made of the kernel values of a block.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace zelsvm {

// Arrays along the columns are aligned to 64 bytes and
// have room for blockPitch<T>(columns) elements; what is written behind the last column means
// nothing.
template <typename T>
struct BlockUse {
  // By row: where its values go; null for nowhere. May be left out.
  std::span<T* const> stored{};
  // sums[f][c] += sum of weights[r * sums.size() + f] K(row r, column c), in the order of the rows.
  // May be left out.
  std::span<const T> weights{};
  std::span<T* const> sums{};
  // Takes columns begin … end - 1 once they have been stored and added, on the thread that did it,
  // whose caches have them; begin is a panel's. Must not throw. May be left out.
  const std::function<void(std::uint64_t begin, std::uint64_t end)>* then = nullptr;
};

template <typename T>
constexpr std::uint64_t blockPitch(std::uint64_t columns) {
  constexpr std::uint64_t step = 64 / sizeof(T);
  return (columns + step - 1) / step * step;
}

}  // namespace zelsvm
