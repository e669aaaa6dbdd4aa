// Small files and failures of tests about files.
#pragma once

#include <unistd.h>

#include <atomic>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace zeltest {

// A file of its own name, removed at the end.
class TempFile {
 public:
  explicit TempFile(std::string_view text = {}) {
    static std::atomic<int> count = 0;
    file = std::filesystem::temp_directory_path() /
           ("zelsvm_" + std::to_string(getpid()) + "_" + std::to_string(++count));
    std::ofstream(file, std::ios::binary) << text;
  }
  ~TempFile() { std::filesystem::remove(file); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  [[nodiscard]] std::string path() const { return file.string(); }
  [[nodiscard]] std::string text() const {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }

 private:
  std::filesystem::path file;
};

// What the action's exception of this type says; other types pass through, none gives "".
template <typename Exception = std::exception, typename Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const Exception& failure) {
    return failure.what();
  }
  return {};
}

}  // namespace zeltest
