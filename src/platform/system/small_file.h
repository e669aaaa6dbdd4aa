// The first few kilobytes of a file that the system keeps about itself.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zel {

// Reads at most 8 KiB when made; a file that cannot be read is empty.
class SmallFile {
 public:
  explicit SmallFile(const char* path);
  [[nodiscard]] std::string_view text() const { return {buffer.data(), length}; }

  // Rest of the first line that begins with the key.
  [[nodiscard]] std::optional<std::string_view> lineAfter(std::string_view key) const&;
  std::optional<std::string_view> lineAfter(std::string_view key) && = delete;
  // The decimal number there, after blanks; none where the line holds something else, like "max".
  [[nodiscard]] std::optional<std::uint64_t> numberAfter(std::string_view key) const;

 private:
  std::array<char, 8192> buffer;
  std::size_t length = 0;
};

}  // namespace zel
