#include "zeldplus/inc/zelconsole.h"

#include <cstdarg>
#include <cstdio>

namespace zel::inline ZEL_PLATFORM {

bool verbose = true;

void printMessage(const char* format, ...) {
  char text[8192];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (std::fputs(text, stdout) == EOF || std::fflush(stdout) != 0) throw OutputClosed{};
}

}  // namespace zel::inline ZEL_PLATFORM
