#include "base/errors.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace zel {

AppException::AppException(const char* text) noexcept {
  std::snprintf(message, sizeof message, "%s", text);
}

RuntimeException::RuntimeException(const char* text) : std::runtime_error("") {
  std::snprintf(message, sizeof message, "%s", text);
}

RuntimeException::RuntimeException(const char* text, const char* file, int line)
    : std::runtime_error("") {
  std::snprintf(message, sizeof message, "%s(%i): %s\n", file, line, text);
}

RuntimeException::RuntimeException(const char* check, const char* kind, const char* detail,
                                   const char* file, int line)
    : std::runtime_error("") {
  std::snprintf(message, sizeof message, "%s(%i): %s: %s - %s.\n", file, line, check, kind, detail);
}

void throwAppException(const char* format, ...) {
  char text[messageCapacity];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  throw AppException(text);
}

void throwRuntimeException(const char* text, const char* file, int line) {
  throw RuntimeException(text, file, line);
}

std::string sourceName(const std::source_location& where) {
  std::string_view path = where.file_name();
  if (const auto root = path.rfind("src/"); root != std::string_view::npos)
    path.remove_prefix(root + 4);
  if (const auto dot = path.rfind('.'); dot != std::string_view::npos) path = path.substr(0, dot);
  return std::string(path);
}

}  // namespace zel
