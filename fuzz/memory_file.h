// Files that no disk sees.
#pragma once

#include <string>
#include <string_view>

namespace zelfuzz {

// A file in memory, opened by its path as often as wanted; gone with this object.
class MemoryFile {
 public:
  explicit MemoryFile(std::string_view text = {});
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  [[nodiscard]] std::string path() const;
  [[nodiscard]] std::string text() const;

 private:
  int descriptor;
};

}  // namespace zelfuzz
