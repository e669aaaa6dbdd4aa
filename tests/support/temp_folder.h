// Folders for tests about several files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace zeltest {

// A fresh empty folder, removed with everything in it at the end.
class TempFolder {
 public:
  TempFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "zelsvm-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make " + name);
    root = name;
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  [[nodiscard]] const std::filesystem::path& folder() const { return root; }
  // Makes the folders on the way, too.
  void write(const std::string& name, const std::string& text) const {
    std::filesystem::create_directories((root / name).parent_path());
    std::ofstream file(root / name, std::ios::binary);
    file << text;
    file.close();
    if (!file) throw std::runtime_error("cannot write " + name);
  }
  // Throws std::runtime_error when there is no such file.
  [[nodiscard]] std::string read(const std::string& name) const {
    std::ifstream file(root / name, std::ios::binary);
    if (!file) throw std::runtime_error("cannot read " + name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path root;
};

}  // namespace zeltest
