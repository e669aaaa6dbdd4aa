#include "tools/terminal_sink.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "base/errors.h"

namespace zelsvm_main {
namespace {

constexpr std::chrono::milliseconds rewriteInterval(250);

bool isSet(const char* variable, std::string_view value) {
  const char* const text = std::getenv(variable);
  return text != nullptr && text == value;
}

bool isTerminal(int stream) { return isatty(stream) != 0; }

std::size_t terminalWidth() {
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0;
  return known ? size.ws_col : 80;
}

// Whether it arrives is not worth a failure.
void writeError(std::string_view text) {
  static_cast<void>(::write(STDERR_FILENO, text.data(), text.size()) < 0);
}

}  // namespace

TerminalSink::TerminalSink(ConsoleSettings settings, std::chrono::milliseconds delay)
    : ConsoleSink(settings.verbose),
      settings(std::move(settings)),
      watched(verbose && isTerminal(STDERR_FILENO) && !isSet("ZELSVM_PROGRESS", "off") &&
              !isSet("TERM", "dumb")),
      below(isTerminal(STDOUT_FILENO)),
      delay(delay) {}

TerminalSink::~TerminalSink() { erase(); }

void TerminalSink::write(std::string_view text) {
  const std::size_t lineBreak = text.rfind('\n');
  const std::size_t end =
      lineBreak == std::string_view::npos ? column + text.size() : text.size() - lineBreak - 1;
  // Text that reaches the line would be mixed up with it.
  if (below && (lineBreak != std::string_view::npos || end >= terminalWidth())) erase();
  ConsoleSink::write(text);
  column = end % terminalWidth();
}

void TerminalSink::warn(std::string_view sentence) {
  if (settings.strict) throw zel::AppException((std::string(sentence) + ".").c_str());
  erase();
  std::string line = settings.program + ": warning: ";
  line.append(sentence).append("\n");
  writeError(line);
}

bool TerminalSink::wantsProgress() {
  if (!watched) return false;
  const Clock::time_point now = Clock::now();
  if (start == Clock::time_point{}) {
    start = now;
    next = now + delay;
  }
  return now >= next;
}

void TerminalSink::showProgress(const zel::SolveProgress& progress) {
  const Clock::time_point now = Clock::now();
  next = now + rewriteInterval;
  char pairs[64] = "";
  if (progress.pairs > 1)
    std::snprintf(pairs, sizeof pairs, "%lu of %lu pairs, ", progress.pairsDone, progress.pairs);
  char rows[64];
  if (progress.kernelValues > 0)
    std::snprintf(rows, sizeof rows, "%.2g kernel values", progress.kernelValues);
  else
    std::snprintf(rows, sizeof rows, "cache hits %.0f %%", 100 * progress.cacheHitRate);
  char line[256];
  // A narrow terminal cuts off what matters least.
  const int length = std::snprintf(
      line, sizeof line, "%.0f s, %s%lu iterations, gap %.2g (ends at %g), %s, %lu SV",
      std::chrono::duration<double>(now - start).count(), pairs, progress.iterations, progress.gap,
      progress.tolerance, rows, progress.supportVectors);
  const auto fitting = std::min(static_cast<std::size_t>(length), terminalWidth() - 1);
  draw(std::string_view(line, fitting));
  shown = true;
}

// Puts the line into its place and the cursor back.
void TerminalSink::draw(std::string_view line) {
  std::string text = below ? "\n\r" : "\r";
  text.append(line).append("\033[K");
  if (below) text.append("\033[A\r");
  if (below && column != 0) text.append("\033[" + std::to_string(column) + "C");
  writeError(text);
}

void TerminalSink::erase() {
  if (!shown) return;
  draw("");
  shown = false;
}

}  // namespace zelsvm_main
