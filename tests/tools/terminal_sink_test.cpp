// The line that says how far training is, as a terminal receives it.
#include "tools/terminal_sink.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/errors.h"
#include "support/temp_file.h"

namespace {

using zelsvm_main::TerminalSink;

// While it lives, the streams given are a terminal of this width.
class Terminal {
 public:
  Terminal(unsigned short width, const std::vector<int>& streams) : streams(streams) {
    termios raw{};
    cfmakeraw(&raw);
    winsize size{24, width, 0, 0};
    int other = -1;
    if (openpty(&reading, &other, nullptr, &raw, &size) != 0) std::abort();
    for (const int stream : streams) {
      before.push_back(dup(stream));
      dup2(other, stream);
    }
    close(other);
  }
  ~Terminal() {
    for (std::size_t i = 0; i < streams.size(); ++i) {
      dup2(before[i], streams[i]);
      close(before[i]);
    }
    close(reading);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  // What arrives until there is as much as expected: text is on its way for a while.
  [[nodiscard]] std::string received(std::size_t expected) const {
    std::string text;
    char piece[256];
    pollfd ready{reading, POLLIN, 0};
    while (text.size() < expected && poll(&ready, 1, 5000) > 0) {
      const ssize_t count = read(reading, piece, sizeof piece);
      if (count <= 0) break;
      text.append(piece, static_cast<std::size_t>(count));
    }
    return text;
  }
  void expect(const std::string& text) const { EXPECT_EQ(received(text.size()), text); }

 private:
  std::vector<int> streams, before;
  int reading = -1;
};

constexpr zel::SolveProgress progress{120, 0.25, 0.001, 0.5, 7};
const std::string line = "0 s, 120 iterations, gap 0.25 (ends at 0.001), cache hits 50 %, 7 SV";
constexpr std::chrono::milliseconds now(0);

TEST(TerminalSink, RewritesItsLineAndTakesItAway) {
  const Terminal terminal(100, {STDERR_FILENO});
  {
    TerminalSink sink({}, now);
    ASSERT_TRUE(sink.wantsProgress());
    const auto before = std::chrono::steady_clock::now();
    sink.showProgress(progress);
    const bool again = sink.wantsProgress();
    terminal.expect("\r" + line + "\033[K");
    sink.showProgress({120, 0.25, 0.001, 0.5, 7, 45, 12});
    terminal.expect("\r0 s, 12 of 45 pairs, " + line.substr(5) + "\033[K");
    // It was due only if this process had to wait so long.
    EXPECT_TRUE(!again ||
                std::chrono::steady_clock::now() - before > std::chrono::milliseconds(250));
  }
  terminal.expect("\r\033[K");
}

TEST(TerminalSink, StaysBelowTextOnTheSameTerminal) {
  const Terminal terminal(20, {STDOUT_FILENO, STDERR_FILENO});
  const std::string shown = "\n\r" + line.substr(0, 19) + "\033[K\033[A\r";
  TerminalSink sink({}, now);
  sink.write("one\n..");
  ASSERT_TRUE(sink.wantsProgress());
  sink.showProgress(progress);
  terminal.expect("one\n.." + shown + "\033[2C");
  sink.write(".");
  terminal.expect(".");
  sink.write("\n");
  terminal.expect("\n\r\033[K\033[A\r\033[3C\n");
  sink.showProgress(progress);
  terminal.expect(shown);
  sink.write(std::string(21, '.'));  // over the end of the row
  sink.showProgress(progress);
  terminal.expect("\n\r\033[K\033[A\r" + std::string(21, '.') + shown + "\033[1C");
}

TEST(TerminalSink, WarnsOnStandardErrorOrFails) {
  const Terminal terminal(100, {STDERR_FILENO});
  TerminalSink sink({.program = "zelsvm-train"}, now);
  ASSERT_TRUE(sink.wantsProgress());
  sink.showProgress(progress);
  sink.warn("odd");
  terminal.expect("\r" + line + "\033[K\r\033[Kzelsvm-train: warning: odd\n");
  TerminalSink strict({.strict = true});
  EXPECT_EQ(zeltest::failureOf<zel::AppException>([&] { strict.warn("odd"); }), "odd.");
}

TEST(TerminalSink, OnlyWhereSomebodyWatches) {
  EXPECT_FALSE(TerminalSink({}, std::chrono::hours(1)).wantsProgress());
  const auto shows = [](bool verbose) {
    return TerminalSink({.verbose = verbose}, now).wantsProgress();
  };
  {
    const Terminal terminal(80, {STDOUT_FILENO});
    EXPECT_EQ(shows(true), isatty(STDERR_FILENO) != 0);
  }
  const Terminal terminal(80, {STDERR_FILENO});
  EXPECT_TRUE(shows(true));
  EXPECT_FALSE(shows(false));
  for (const auto& [name, value] : {std::pair{"ZELSVM_PROGRESS", "off"}, {"TERM", "dumb"}}) {
    setenv(name, value, 1);
    EXPECT_FALSE(shows(true)) << name;
    setenv(name, "other", 1);
    EXPECT_TRUE(shows(true)) << name;
    unsetenv(name);
  }
}

}  // namespace
