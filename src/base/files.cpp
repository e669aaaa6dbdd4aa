#include "base/files.h"

#include <fcntl.h>

#include <filesystem>
#include <system_error>

#include "base/errors.h"

namespace zel {
namespace {

// A directory would open and its reading fail later.
bool isDirectory(const std::string& path) {
  std::error_code unknown;
  return std::filesystem::is_directory(path, unknown);
}

}  // namespace

bool CFile::open(const std::string& filePath, bool allowFailure) {
  if (filePath.empty()) throwAppException("missing file path.");
  if (mode == FileMode::write)
    output = OutputFile::open(filePath);
  else if (!isDirectory(filePath))
    input = Descriptor(::open(filePath.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC));
  const bool isOpen = output != nullptr || input.isOpen();
  if (!isOpen && !allowFailure) throwAppException("failed to open %s.", filePath.c_str());
  path = filePath;
  if (input.isOpen()) lines = std::make_unique<LineReader>(input, path);
  return isOpen;
}

void CFile::write(const char* text, std::size_t length) {
  requireArrival(output->write({text, length}));
}

void CFile::finish() { requireArrival(output->finish()); }

void CFile::close() {
  lines.reset();
  input.close();
  if (output) requireArrival(output->publish());
  output.reset();
}

void CFile::requireArrival(bool arrived) const {
  if (!arrived) throwAppException("failed writing to file: %s", path.c_str());
}

}  // namespace zel
