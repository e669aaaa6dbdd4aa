#include "platform/row_slots.h"

#include <algorithm>
#include <limits>

#include "base/errors.h"

namespace zelsvm {
namespace {

constexpr std::uint64_t slotStep = 16;

}  // namespace

std::uint64_t rowCacheBytes(std::uint64_t megabytes, std::uint64_t freeBytes, unsigned sharers) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max() >> 20;
  return std::min(std::min(megabytes, most) << 20, freeBytes / 2) / sharers;
}

std::uint64_t rowSlotCount(std::uint64_t rows, std::uint64_t slotBytes, std::uint64_t bytes) {
  const std::uint64_t fitting = bytes / slotBytes;
  if (rows <= fitting) return rows;
  return std::max(fitting / slotStep * slotStep, slotStep);
}

void RowSlots::assign(std::uint64_t rows, std::uint64_t slots) {
  entries.resize(slots);
  slotOfRow.assign(rows, 0);
  used = 0;
  clock = 0;
}

std::optional<std::uint64_t> RowSlots::query(std::uint64_t row) {
  if (row >= slotOfRow.size())
    throw zel::RuntimeException("Unexpected kernel cache query request.");
  if (slotOfRow[row] == 0) return std::nullopt;
  const std::uint64_t slot = slotOfRow[row] - 1;
  entries[slot].stamp = clock++;
  return slot;
}

std::uint64_t RowSlots::grab(std::uint64_t row) {
  if (row >= slotOfRow.size()) throw zel::RuntimeException("Unexpected kernel cache grab request.");
  const std::uint64_t slot = used < count() ? used : oldest();
  if (slot < used)
    slotOfRow[entries[slot].row] = 0;
  else
    ++used;
  entries[slot] = {clock++, row};
  slotOfRow[row] = static_cast<std::uint32_t>(slot + 1);
  return slot;
}

std::uint64_t RowSlots::oldest() const {
  const auto end = entries.begin() + static_cast<std::ptrdiff_t>(used);
  const auto found = std::min_element(
      entries.begin(), end, [](const auto& a, const auto& b) { return a.stamp < b.stamp; });
  return static_cast<std::uint64_t>(found - entries.begin());
}

void RowSlots::clear() {
  for (std::uint64_t slot = 0; slot < used; ++slot) slotOfRow[entries[slot].row] = 0;
  used = 0;
}

}  // namespace zelsvm
