// Lines of a text file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/descriptor.h"
#include "base/vectors.h"

namespace zel {

// A part of a file, in bytes from its start.
struct FileRange {
  std::uint64_t begin = 0;
  std::uint64_t end = std::numeric_limits<std::uint64_t>::max();
};

// Hands out one line after the other and holds no more of the file than a block and that line.
class LineReader {
 public:
  // Reads on where the descriptor stands, which may be a pipe's. It must outlive the reader; the
  // path is for messages.
  LineReader(const Descriptor& file, std::string path);
  // Reads this range of a file, at whose begin a line begins. Any number of readers may share the
  // descriptor, which stays where it stands.
  LineReader(const Descriptor& file, std::string path, const FileRange& range);

  // The next line, without its LF or CR LF, whatever its length; false at the end. A byte-order
  // mark at the file's start is passed over. The view lasts until the next call. Throws
  // AppException when the file cannot be read or where a NUL character stands.
  bool readLine(std::string_view& line);

  // Did the last line that was read end with a line feed?
  [[nodiscard]] bool lastLineEnded() const { return lineEnded; }
  // Where the last line that was read begins, counted from where the reader began.
  [[nodiscard]] std::uint64_t lineBegin() const { return lastLine; }

 private:
  bool readBlock();
  void makeRoom();

  const Descriptor& file;
  std::string path;
  std::optional<FileRange> unread;  // of a file that can be read at any place
  std::uint64_t blockBegin = 0;     // in the file
  HVector<char> block;              // what was read and not handed out is block[position, filled)
  std::size_t position = 0;
  std::size_t filled = 0;
  std::uint64_t lastLine = 0;
  bool lineEnded = false;
  bool atNul = false;  // one stands behind what was read
};

// Cuts a file, from a place on where a line begins, into ranges that begin with a line: of so many
// bytes and the rest of the line there, the last one without end. Throws AppException when the file
// cannot be read.
std::vector<FileRange> cutAtLines(const Descriptor& file, const std::string& path,
                                  std::uint64_t begin, std::uint64_t length);

}  // namespace zel
