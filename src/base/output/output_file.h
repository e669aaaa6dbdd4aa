// Files that take their place when they are whole.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "base/descriptor.h"
#include "base/output/output_target.h"
#include "base/output/unfinished_files.h"

namespace zel {

// Text is gathered in a temporary file in the same folder, which is renamed at the end: nobody sees
// a part of it, and what stood there before stays until then. A symbolic link stays and what it
// leads to is replaced, by a file of the same owner and mode. Open files, and those
// that cannot be replaced in their folder, are written in place; the first text empties them.
class OutputFile {
 public:
  // Null where nothing can be written. Opening a pipe waits for its reader.
  static std::unique_ptr<OutputFile> open(const std::string& path);
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  // What was not published is gone.
  ~OutputFile();

  // Each is false where the text has not arrived.
  bool write(std::string_view text);
  // All that was written is with the system; a file in place is closed.
  bool finish();
  // Finishes, and gives the file its name.
  bool publish();

 private:
  explicit OutputFile(OutputTarget target) : target(std::move(target)) {}
  bool openPlace();
  bool openTemporary();
  void takeOverOwner();
  bool writeOut(std::string_view text);
  bool copyIntoPlace();
  void removeTemporary();

  OutputTarget target;
  Descriptor place;  // what is there already
  Descriptor folder;
  Descriptor temporary;
  std::string temporaryName;                 // empty once it is gone
  std::optional<UnfinishedFile> unfinished;  // uses the folder
  bool mayReplace = true;
  bool emptied = false;  // the file in place
  std::string gathered;
};

// Throws AppException where OutputFile::open would fail, and leaves no trace; pipes are not opened.
void requireWritable(const std::string& path);

}  // namespace zel
