#include "base/line_reader.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "base/errors.h"

namespace zel {
namespace {

constexpr std::uint64_t readBlockSize = std::uint64_t{256} << 10;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void throwUnreadable(const std::string& path) {
  throwAppException("The file %s cannot be read.", path.c_str());
}

// Calls read(target, room) until the room is full or the file at its end; returns what it holds.
template <typename Read>
std::size_t fill(char* target, std::size_t room, const std::string& path, const Read& read) {
  std::size_t filled = 0;
  while (filled < room) {
    const ssize_t count = read(target + filled, room - filled);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throwUnreadable(path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return filled;
}

std::size_t readOn(const Descriptor& file, const std::string& path, char* target,
                   std::size_t room) {
  return fill(target, room, path,
              [&](char* to, std::size_t size) { return ::read(file.get(), to, size); });
}

std::size_t readAt(const Descriptor& file, const std::string& path, char* target, std::size_t room,
                   std::uint64_t place) {
  return fill(target, room, path, [&](char* to, std::size_t size) {
    const auto from = place + static_cast<std::uint64_t>(to - target);
    return ::pread(file.get(), to, size, static_cast<off_t>(from));
  });
}

const char* findLineFeed(const char* begin, std::size_t size) {
  return size == 0 ? nullptr : static_cast<const char*>(std::memchr(begin, '\n', size));
}

// Behind the line feed that comes first from this place on; the file's end if there is none.
std::uint64_t endOfLine(const Descriptor& file, const std::string& path, std::uint64_t place) {
  std::array<char, 4096> text;
  for (;;) {
    const std::size_t count = readAt(file, path, text.data(), text.size(), place);
    const char* const lineFeed = findLineFeed(text.data(), count);
    if (lineFeed != nullptr) return place + static_cast<std::uint64_t>(lineFeed - text.data()) + 1;
    place += count;
    if (count < text.size()) return place;
  }
}

}  // namespace

LineReader::LineReader(const Descriptor& file, std::string path)
    : file(file), path(std::move(path)) {}

LineReader::LineReader(const Descriptor& file, std::string path, const FileRange& range)
    : file(file), path(std::move(path)), unread(range), blockBegin(range.begin) {}

bool LineReader::readLine(std::string_view& line) {
  std::size_t searched = 0;  // characters of the line in which there is no line feed
  const char* lineEnd = nullptr;
  while (lineEnd == nullptr) {
    const std::size_t from = position + searched;
    lineEnd = findLineFeed(block.data() + from, filled - from);
    searched = filled - position;
    if (lineEnd != nullptr || readBlock()) continue;
    if (searched == 0) return false;
    lineEnd = block.data() + filled;
  }
  const char* const begin = block.data() + position;
  const auto length = static_cast<std::size_t>(lineEnd - begin);
  lastLine = blockBegin + position;
  lineEnded = position + length < filled;
  position += lineEnded ? length + 1 : length;
  line = std::string_view(begin, length);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return true;
}

// Reads on behind the unfinished line; false at the end.
bool LineReader::readBlock() {
  if (atNul)
    throwAppException("The file %s holds a NUL character, which no text has.", path.c_str());
  makeRoom();
  char* const target = block.data() + filled;
  std::size_t room = block.size() - filled;
  std::size_t count = 0;
  if (unread) {
    room = std::min<std::uint64_t>(room, unread->end - unread->begin);
    count = readAt(file, path, target, room, unread->begin);
    unread->begin += count;
  } else {
    count = readOn(file, path, target, room);
  }
  // The lines before it are handed out first.
  if (const void* const nul = std::memchr(target, '\0', count)) {
    atNul = true;
    count = static_cast<std::size_t>(static_cast<const char*>(nul) - target);
  }
  filled += count;
  if (blockBegin == 0 && filled == count &&
      std::string_view(block.data(), filled).starts_with(byteOrderMark))
    position = byteOrderMark.size();
  return count > 0 || atNul;
}

// Moves the unfinished line to the front of a block that has room for as much again.
void LineReader::makeRoom() {
  const std::size_t unfinished = filled - position;
  if (unfinished * 2 <= block.size() && block.size() > 0) {
    std::memmove(block.data(), block.data() + position, unfinished);
  } else {
    HVector<char> larger(block.size() == 0 ? readBlockSize : block.size() * 2);
    if (unfinished > 0) std::memcpy(larger.data(), block.data() + position, unfinished);
    block = std::move(larger);
  }
  blockBegin += position;
  position = 0;
  filled = unfinished;
}

std::vector<FileRange> cutAtLines(const Descriptor& file, const std::string& path,
                                  std::uint64_t begin, std::uint64_t length) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) throwUnreadable(path);
  const auto size = static_cast<std::uint64_t>(status.st_size);
  std::vector<FileRange> ranges{{.begin = begin}};
  while (begin + length < size) {
    begin = endOfLine(file, path, begin + length - 1);
    if (begin >= size) break;
    ranges.back().end = begin;
    ranges.push_back({.begin = begin});
  }
  return ranges;
}

}  // namespace zel
