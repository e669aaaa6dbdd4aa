// Formatted output to a file or a string, gathered so that small pieces cost little.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/files.h"

namespace zel {

// Text of any length, and numbers as "%g", "%d" and "%lu" in the C locale. What is gathered reaches
// its target with flush() at the latest. All operations throw AppException when a write fails.
class TextOutput {
 public:
  // The target must outlive the output.
  explicit TextOutput(CFile& file) : file(&file) {}
  explicit TextOutput(std::string& string) : string(&string) {}
  TextOutput(const TextOutput&) = delete;
  TextOutput& operator=(const TextOutput&) = delete;
  ~TextOutput() = default;

  TextOutput& put(std::string_view text);
  TextOutput& put(double value);
  // More digits where six are further from the value than the resolution.
  TextOutput& put(double value, double resolution);
  TextOutput& put(std::int32_t value);
  TextOutput& put(std::uint64_t value);
  void flush();

 private:
  void arrive(std::string_view text);
  char* roomForNumber();
  TextOutput& usedUpTo(const char* end);

  CFile* file = nullptr;
  std::string* string = nullptr;  // where there is no file
  std::array<char, 8192> buffer;
  std::size_t used = 0;
};

}  // namespace zel
