#include "base/files.h"

#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "base/errors.h"

namespace zel {
namespace {

constexpr std::uint64_t readBlockSize = std::uint64_t{256} << 10;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// A stream would open a directory for reading and fail later.
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
    stream.open(filePath, std::ios::binary | std::ios::in);
  const bool isOpen = output != nullptr || stream.is_open();
  if (!isOpen && !allowFailure) throwAppException("failed to open %s.", filePath.c_str());
  path = filePath;
  return isOpen;
}

void CFile::write(const char* text, std::size_t length) {
  requireArrival(output->write({text, length}));
}

void CFile::finish() { requireArrival(output->finish()); }

void CFile::close() {
  stream.close();
  if (output) requireArrival(output->publish());
  output.reset();
}

void CFile::requireArrival(bool arrived) const {
  if (!arrived) throwAppException("failed writing to file: %s", path.c_str());
}

bool CFile::readLine(std::string_view& line) {
  std::size_t searched = 0;  // characters of the line in which there is no line feed
  const char* lineEnd = nullptr;
  while (lineEnd == nullptr) {
    const std::size_t from = position + searched;
    if (filled > from)
      lineEnd = static_cast<const char*>(std::memchr(block.data() + from, '\n', filled - from));
    searched = filled - position;
    if (lineEnd != nullptr || readBlock()) continue;
    if (searched == 0) return false;
    lineEnd = block.data() + filled;
  }
  const char* const begin = block.data() + position;
  const auto length = static_cast<std::size_t>(lineEnd - begin);
  lineEnded = position + length < filled;
  position += lineEnded ? length + 1 : length;
  line = std::string_view(begin, length);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return true;
}

// Reads on behind the unfinished line; false at the end of the file.
bool CFile::readBlock() {
  makeRoom();
  const std::size_t room = block.size() - filled;
  stream.read(block.data() + filled, static_cast<std::streamsize>(room));
  if (stream.bad()) throwAppException("failed reading from file: %s", path.c_str());
  const auto count = static_cast<std::size_t>(stream.gcount());
  if (std::memchr(block.data() + filled, '\0', count) != nullptr)
    throwAppException("a NUL character in text file: %s", path.c_str());
  const bool first = !begun;
  begun = true;
  filled += count;
  if (first && std::string_view(block.data(), filled).starts_with(byteOrderMark))
    position = byteOrderMark.size();
  return count > 0;
}

// Moves the unfinished line to the front of a block that has room for as much again.
void CFile::makeRoom() {
  const std::size_t unfinished = filled - position;
  if (unfinished * 2 <= block.size() && block.size() > 0) {
    std::memmove(block.data(), block.data() + position, unfinished);
  } else {
    HVector<char> larger(block.size() == 0 ? readBlockSize : block.size() * 2);
    if (unfinished > 0) std::memcpy(larger.data(), block.data() + position, unfinished);
    block = std::move(larger);
  }
  position = 0;
  filled = unfinished;
}

}  // namespace zel
