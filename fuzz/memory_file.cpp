#include "memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace zelfuzz {

MemoryFile::MemoryFile(std::string_view text) : descriptor(memfd_create("fuzz", MFD_CLOEXEC)) {
  if (descriptor < 0) std::abort();
  std::ofstream(path(), std::ios::binary) << text;
}

MemoryFile::~MemoryFile() { close(descriptor); }

std::string MemoryFile::path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

std::string MemoryFile::text() const {
  std::ifstream stream(path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace zelfuzz
