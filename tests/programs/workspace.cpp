#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

#include "programs/tool_process.h"

namespace zeltest {

namespace fs = std::filesystem;

Workspace::Workspace() {
  std::string name = (fs::temp_directory_path() / "zelsvm-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr)
    throw std::system_error(errno, std::generic_category(), "mkdtemp");
  root = name;
}

Workspace::~Workspace() {
  std::error_code ignored;
  fs::remove_all(root, ignored);
}

void Workspace::write(const std::string& name, const std::string& text) const {
  std::ofstream file(root / name, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error("cannot write " + name);
}

std::string Workspace::read(const std::string& name) const {
  std::ifstream file(root / name, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> Workspace::files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(root))
    names.push_back(fs::relative(entry.path(), root).string());
  std::sort(names.begin(), names.end());
  return names;
}

void Workspace::copyProgram(const std::string& name) const {
  fs::copy_file(fs::path(ZEL_TOOL_DIR) / "zelsvm", root / name);
}

}  // namespace zeltest
