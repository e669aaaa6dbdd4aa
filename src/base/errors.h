// The two kinds of failure: what the user did wrong, and what the machine or the program did.
#pragma once

#include <cstddef>
#include <exception>
#include <source_location>
#include <stdexcept>
#include <string>

namespace zel {

// Messages are cut to this many characters, the terminating NUL included.
inline constexpr std::size_t messageCapacity = 8192;

// Bad input, bad parameters, or a part asked for before it exists. Its text is a plain sentence.
class AppException : public std::exception {
 public:
  explicit AppException(const char* text) noexcept;
  ~AppException() override = default;
  AppException(const AppException&) = default;
  AppException& operator=(const AppException&) = default;
  [[nodiscard]] const char* what() const noexcept override { return message; }

 private:
  char message[messageCapacity];
};

// A failure of the machine, of a library or of the program's own invariants.
class RuntimeException : public std::runtime_error {
 public:
  explicit RuntimeException(const char* text);
  // "file(line): text\n"
  RuntimeException(const char* text, const char* file, int line);
  // "file(line): check: kind - detail.\n"
  RuntimeException(const char* check, const char* kind, const char* detail, const char* file,
                   int line);
  ~RuntimeException() override = default;
  RuntimeException(const RuntimeException&) = default;
  RuntimeException& operator=(const RuntimeException&) = default;
  [[nodiscard]] const char* what() const noexcept override { return message; }

 private:
  char message[messageCapacity];
};

// Throws AppException with the formatted text.
[[noreturn]] void throwAppException(const char* format, ...) __attribute__((format(printf, 1, 2)));

[[noreturn]] void throwRuntimeException(const char* text, const char* file, int line);

// Path of a source file below src/, without its extension, as error texts name it.
std::string sourceName(const std::source_location& where);

}  // namespace zel
