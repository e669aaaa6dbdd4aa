#include "zeldplus/inc/zelconsole.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace zel::inline ZEL_PLATFORM {
namespace {

// Every thread starts with it.
ConsoleSink console(true);
thread_local MessageSink* threadSink = &console;

}  // namespace

void ConsoleSink::write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw OutputClosed{};
}

SinkScope::SinkScope(MessageSink& sink) : before(std::exchange(threadSink, &sink)) {}

SinkScope::~SinkScope() { threadSink = before; }

MessageSink& currentSink() { return *threadSink; }

bool isVerbose() { return threadSink->verbose; }

bool wantsProgress() { return threadSink->wantsProgress(); }

void showProgress(const SolveProgress& progress) { threadSink->showProgress(progress); }

void printMessage(const char* format, ...) {
  char text[8192];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  writeMessage(text);
}

void writeMessage(std::string_view text) { threadSink->write(text); }

}  // namespace zel::inline ZEL_PLATFORM
