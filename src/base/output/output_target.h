// Where a path leads that something is to be written to.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace zel {

// What stands at the end of a path's symbolic links.
struct OutputTarget {
  enum class Kind : std::uint32_t {
    unusable,  // a folder, or nothing that could be reached
    absent,    // nothing yet
    regular,
    open,  // a device, a pipe, or an open file's name in /proc: replacing it would miss the reader
  };

  explicit OutputTarget(const std::string& given);

  Kind kind = Kind::unusable;
  std::filesystem::path path;  // of an open one, as given
  struct stat status {};       // of a regular one
};

// Whether both paths lead to one regular file, or to the same place where there is none yet.
bool leadToSameFile(const std::string& a, const std::string& b);

}  // namespace zel
