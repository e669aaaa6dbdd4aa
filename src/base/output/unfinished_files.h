// The temporary files of this process, for a signal's handler that has to remove them.
#pragma once

#include <string>

namespace zel {

// While it lives, removeUnfinishedFiles() removes the file of this name from the folder. Where
// there are very many at the same time, it leaves some.
class UnfinishedFile {
 public:
  // The open folder must outlive it.
  UnfinishedFile(int folder, const std::string& name);
  ~UnfinishedFile();
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

 private:
  std::size_t place;
};

// May be called from a signal's handler.
void removeUnfinishedFiles() noexcept;

}  // namespace zel
