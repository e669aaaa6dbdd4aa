#include "platform/emulated/runtime/guard.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace zel {
namespace {

constexpr auto guard = [] {
  std::array<unsigned char, guardBytes> bytes{};
  bytes.fill(0xE3);
  return bytes;
}();

}  // namespace

void fillGuard(void* memory) { std::memcpy(memory, guard.data(), guardBytes); }

bool isGuardIntact(const void* memory) {
  return std::memcmp(memory, guard.data(), guardBytes) == 0;
}

void poison(void* memory, std::size_t bytes, unsigned pattern) {
  constexpr std::array<std::uint32_t, 3> words = {0x7FF7A5A5, 0x7FEFA5A5, 0xFFEFA5A5};
  const std::uint32_t word = words.at(pattern % words.size());
  auto* const target = static_cast<unsigned char*>(memory);
  for (std::size_t k = 0; k < bytes; k += sizeof word)
    std::memcpy(target + k, &word, std::min(sizeof word, bytes - k));
}

}  // namespace zel
