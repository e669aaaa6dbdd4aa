#include "zeldplus/inc/zelfiles.h"

#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "zeldplus/inc/zelerrors.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t writeBufferSize = std::uint64_t{64} << 10;
constexpr std::uint64_t readBlockSize = std::uint64_t{256} << 10;

// A stream would open a directory for reading and fail later.
bool isDirectory(const std::string& path) {
  std::error_code unknown;
  return std::filesystem::is_directory(path, unknown);
}

}  // namespace

CFile::CFile(FileMode mode) : mode(mode) {
  if (mode == FileMode::read) return;
  // The stream takes a buffer only before it is opened.
  writeBuffer.resize(writeBufferSize);
  stream.rdbuf()->pubsetbuf(writeBuffer.data(), static_cast<std::streamsize>(writeBufferSize));
}

bool CFile::open(const std::string& filePath, bool allowFailure) {
  if (filePath.empty()) throwAppException("missing file path.");
  if (!isDirectory(filePath))
    stream.open(filePath,
                std::ios::binary | (mode == FileMode::read ? std::ios::in : std::ios::out));
  if (!stream.is_open() && !allowFailure) throwAppException("failed to open %s.", filePath.c_str());
  path = filePath;
  return stream.is_open();
}

void CFile::write(const char* text, std::size_t length) {
  stream.write(text, static_cast<std::streamsize>(length));
  if (stream.bad()) throwAppException("failed writing to file: %s", path.c_str());
}

void CFile::close() {
  stream.close();
  if (mode == FileMode::write && !stream.good())
    throwAppException("failed writing to file: %s", path.c_str());
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
  filled += count;
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

}  // namespace zel::inline ZEL_PLATFORM
