// Files: everything the system reads or writes goes through CTextFile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "base/output_file.h"
#include "base/vectors.h"

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

  // The next line, without its LF or CR LF, whatever its length; false at the end of the file. A
  // byte-order mark at the file's start is passed over. The view lasts until the next call. Throws
  // AppException when the file cannot be read or holds a NUL character.
  bool readLine(std::string_view& line);

  // Did the last line that was read end with a line feed?
  [[nodiscard]] bool lastLineEnded() const { return lineEnded; }

 private:
  void requireArrival(bool arrived) const;
  bool readBlock();
  void makeRoom();

  FileMode mode;
  std::string path;
  std::unique_ptr<OutputFile> output;  // where it is written
  HVector<char> block;  // what was read and not handed out is block[position, filled)
  std::size_t position = 0;
  std::size_t filled = 0;
  bool begun = false;  // something was read
  bool lineEnded = false;
  std::ifstream stream;
};

class CTextFile : public CFile {
 public:
  using CFile::CFile;
};

}  // namespace zel
