// What the file names of a command line may not be.
#pragma once

#include <string>

namespace zelsvm_main {

// A file name and what it stands for, such as "model file".
struct NamedFile {
  const char* role;
  const std::string& path;
};

// Throws AppException where writing the one would destroy the other, which is read: where both lead
// to the same existing file.
void requireOtherFile(const NamedFile& written, const NamedFile& read);

// The same for two files that are written, which need not exist yet.
void requireTwoFiles(const NamedFile& written, const NamedFile& other);

}  // namespace zelsvm_main
