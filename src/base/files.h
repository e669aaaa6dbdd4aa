// Files: everything the system reads or writes goes through CTextFile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "base/descriptor.h"
#include "base/line_reader.h"
#include "base/output/output_file.h"

namespace zel {

enum class FileMode : std::uint32_t { read = 1, write = 2 };

// One file. What is written counts with close() only: without it, a failed run leaves nothing but
// what was there before.
class CFile {
 public:
  explicit CFile(FileMode mode) : mode(mode) {}
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  virtual ~CFile() = default;

  // Throws AppException for an empty path and, unless failure is allowed, for a file that does not
  // open; a directory does not open.
  bool open(const std::string& path, bool allowFailure = false);

  // Throws AppException when the text does not arrive.
  void write(const char* text, std::size_t length);

  // Everything is written, only the name is missing: of several files that belong together, none
  // should get its name before all are written. Throws AppException when that fails, as on a full
  // disk.
  void finish();

  // Finishes a written file and puts it in its place; throws AppException when that fails.
  void close();

  // LineReader::readLine, for the lines from the file's start.
  bool readLine(std::string_view& line) { return lines->readLine(line); }
  [[nodiscard]] bool lastLineEnded() const { return lines->lastLineEnded(); }
  [[nodiscard]] std::uint64_t lineBegin() const { return lines->lineBegin(); }

  // For a file that can be read at any place, whatever else is read of it. LineReader of a range;
  // the file must stay open.
  [[nodiscard]] LineReader linesIn(const FileRange& range) const { return {input, path, range}; }
  // zel::cutAtLines.
  [[nodiscard]] std::vector<FileRange> cutAtLines(std::uint64_t begin, std::uint64_t length) const {
    return zel::cutAtLines(input, path, begin, length);
  }

 private:
  void requireArrival(bool arrived) const;

  FileMode mode;
  std::string path;
  std::unique_ptr<OutputFile> output;  // where it is written
  Descriptor input;                    // from where it is read
  std::unique_ptr<LineReader> lines;   // which is read from its start
};

class CTextFile : public CFile {
 public:
  using CFile::CFile;
};

}  // namespace zel
