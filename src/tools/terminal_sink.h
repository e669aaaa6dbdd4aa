// The tools' console: messages on standard output, warnings on standard error and, while somebody
// watches, how far training is.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/output/console.h"

namespace zelsvm_main {

struct ConsoleSettings {
  bool verbose = true;
  bool strict = false;             // warnings are errors
  std::string program = "zelsvm";  // whose warnings they are
};

// Once a solver has run for some time, a line on standard error says how far it is: rewritten in
// place, gone before anything else is written there and at the end. There is none unless standard
// error is a terminal, in quiet runs, and with ZELSVM_PROGRESS=off. Where standard output is a
// terminal, too, the line stands below the text, which it leaves alone.
class TerminalSink : public zel::ConsoleSink {
 public:
  explicit TerminalSink(ConsoleSettings settings,
                        std::chrono::milliseconds delay = std::chrono::seconds(2));
  ~TerminalSink() override;
  TerminalSink(const TerminalSink&) = delete;
  TerminalSink& operator=(const TerminalSink&) = delete;

  void write(std::string_view text) override;
  // Throws AppException with the sentence where warnings are errors.
  void warn(std::string_view sentence) override;
  bool wantsProgress() override;
  void showProgress(const zel::SolveProgress& progress) override;

 private:
  using Clock = std::chrono::steady_clock;

  void draw(std::string_view line);
  void erase();

  ConsoleSettings settings;
  bool watched = false;
  bool below = false;  // standard output is a terminal
  std::chrono::milliseconds delay;
  Clock::time_point start;  // of the first solver
  Clock::time_point next;   // when the line is due
  bool shown = false;
  std::size_t column = 0;  // where the text on standard output ends
};

}  // namespace zelsvm_main
