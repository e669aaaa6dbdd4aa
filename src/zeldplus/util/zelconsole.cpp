#include "zeldplus/inc/zelconsole.h"

#include <cstdarg>
#include <cstdio>
#include <utility>

namespace zel::inline ZEL_PLATFORM {
namespace {

// Null for the console that every thread starts with.
thread_local MessageSink* threadSink = nullptr;

}  // namespace

void ConsoleSink::write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw OutputClosed{};
}

SinkScope::SinkScope(MessageSink& sink) : before(std::exchange(threadSink, &sink)) {}

SinkScope::~SinkScope() { threadSink = before; }

bool isVerbose() { return threadSink == nullptr || threadSink->verbose; }

bool wantsProgress() { return threadSink != nullptr && threadSink->wantsProgress(); }

void showProgress(const SolveProgress& progress) {
  if (threadSink != nullptr) threadSink->showProgress(progress);
}

void printMessage(const char* format, ...) {
  char text[8192];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  if (threadSink != nullptr) return threadSink->write(text);
  ConsoleSink(true).write(text);
}

}  // namespace zel::inline ZEL_PLATFORM
