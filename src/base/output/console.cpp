#include "base/output/console.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <system_error>
#include <utility>

namespace zel {
namespace {

// Every thread starts with it.
ConsoleSink console(true);
thread_local MessageSink* threadSink = &console;

std::atomic<bool> outputLost = false;

}  // namespace

void ConsoleSink::write(std::string_view text) {
  if (outputLost) return;
  if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
    return;
  const int error = errno;
  if (error == EPIPE) throw OutputClosed{};
  if (outputLost.exchange(true)) return;
  std::fprintf(stderr, "Standard output cannot be written: %s.\n",
               std::generic_category().message(error).c_str());
}

bool isOutputLost() { return outputLost; }

SinkScope::SinkScope(MessageSink& sink) : before(std::exchange(threadSink, &sink)) {}

SinkScope::~SinkScope() { threadSink = before; }

MessageSink& currentSink() { return *threadSink; }

bool isVerbose() { return threadSink->verbose; }

bool isStopped() {
  const StopScope* const stop = StopScope::current();
  return (stop != nullptr && stop->isSet()) || threadSink->isStopped();
}

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

void warn(std::string_view sentence) { threadSink->warn(sentence); }

}  // namespace zel
