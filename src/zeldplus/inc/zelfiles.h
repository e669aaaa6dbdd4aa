// Files: everything the system reads or writes goes through CTextFile.
#pragma once

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>

#include "zeldplus/inc/zelvectors.h"

namespace zel::inline ZEL_PLATFORM {

enum class FileMode : std::uint32_t { read = 1, write = 2 };

// One file stream. Writing is buffered: only close() proves that everything has arrived.
class CFile {
 public:
  explicit CFile(FileMode mode);
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  virtual ~CFile() = default;

  // Throws AppException for an empty path and, unless failure is allowed, for a file that does not
  // open; a directory does not open. Writing creates or truncates the file.
  bool open(const std::string& path, bool allowFailure = false);

  // Throws AppException when the stream has gone bad.
  void write(const char* text, std::size_t length);

  // Throws AppException when a written file is not complete, as on a full disk. The destructor
  // closes too, but silently.
  void close();

  // The next line, without its LF or CR LF, whatever its length; false at the end of the file. The
  // view lasts until the next call. Throws AppException when the file cannot be read or holds a NUL
  // character.
  bool readLine(std::string_view& line);

  // Did the last line that was read end with a line feed?
  [[nodiscard]] bool lastLineEnded() const { return lineEnded; }

 private:
  bool readBlock();
  void makeRoom();

  FileMode mode;
  std::string path;
  HVector<char> writeBuffer;
  HVector<char> block;  // what was read and not handed out is block[position, filled)
  std::size_t position = 0;
  std::size_t filled = 0;
  bool lineEnded = false;
  std::fstream stream;  // last, as it uses writeBuffer until it is closed
};

class CTextFile : public CFile {
 public:
  using CFile::CFile;
};

}  // namespace zel::inline ZEL_PLATFORM
