// Console output: everything the tools print goes through printMessage.
#pragma once

namespace zel::inline ZEL_PLATFORM {

// Informational lines are printed only while this is set; -q clears it.
extern bool verbose;

// Thrown when standard output can no longer be written: nobody reads on, so the run ends quietly.
struct OutputClosed {};

// Formats into 8192 characters (longer text is cut), writes to standard output and flushes it.
// Throws OutputClosed when the text cannot be written.
void printMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace zel::inline ZEL_PLATFORM
