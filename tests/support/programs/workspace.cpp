#include <algorithm>

#include "support/programs/tool_process.h"

namespace zeltest {

namespace fs = std::filesystem;

std::vector<std::string> Workspace::files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(folder()))
    names.push_back(fs::relative(entry.path(), folder()).string());
  std::sort(names.begin(), names.end());
  return names;
}

void Workspace::copyProgram(const std::string& name) const {
  fs::copy_file(fs::path(ZEL_TOOL_DIR) / "zelsvm", folder() / name);
}

}  // namespace zeltest
