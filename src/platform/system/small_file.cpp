#include "platform/system/small_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>

namespace zel {

SmallFile::SmallFile(const char* path) {
  const int file = ::open(path, O_RDONLY | O_CLOEXEC);
  if (file < 0) return;
  while (length < buffer.size()) {
    const ssize_t got = ::read(file, buffer.data() + length, buffer.size() - length);
    if (got <= 0) break;
    length += static_cast<std::size_t>(got);
  }
  ::close(file);
}

std::optional<std::string_view> SmallFile::lineAfter(std::string_view key) const& {
  std::string_view rest = text();
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string_view line = rest.substr(0, end);
    if (line.starts_with(key)) return line.substr(key.size());
    rest = end == std::string_view::npos ? std::string_view{} : rest.substr(end + 1);
  }
  return std::nullopt;
}

std::optional<std::uint64_t> SmallFile::numberAfter(std::string_view key) const {
  auto line = lineAfter(key);
  if (!line) return std::nullopt;
  line->remove_prefix(std::min(line->find_first_not_of(" \t"), line->size()));
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(line->data(), line->data() + line->size(), value);
  if (error != std::errc{}) return std::nullopt;
  return value;
}

}  // namespace zel
