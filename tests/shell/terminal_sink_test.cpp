// The line that says how far training is, as a terminal receives it.
#include "zelsvm/terminal_sink.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <unistd.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

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
    fcntl(reading, F_SETFL, O_NONBLOCK);
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

  // What has arrived since the last call.
  [[nodiscard]] std::string received() const {
    char text[1024];
    const ssize_t count = read(reading, text, sizeof text);
    return {text, static_cast<std::size_t>(count < 0 ? 0 : count)};
  }

 private:
  std::vector<int> streams, before;
  int reading = -1;
};

constexpr zel::SolveProgress progress{120, 0.25, 0.001, 0.5, 7};
const std::string line = "120 iterations, gap 0.25 (ends at 0.001), cache hits 50 %, 7 SV, 0 s";
constexpr std::chrono::milliseconds now(0);

TEST(TerminalSink, RewritesItsLineAndTakesItAway) {
  const Terminal terminal(100, {STDERR_FILENO});
  {
    TerminalSink sink(true, now);
    ASSERT_TRUE(sink.wantsProgress());
    sink.showProgress(progress);
    EXPECT_EQ(terminal.received(), "\r" + line + "\033[K");
    EXPECT_FALSE(sink.wantsProgress());
  }
  EXPECT_EQ(terminal.received(), "\r\033[K");
}

TEST(TerminalSink, StaysBelowTextOnTheSameTerminal) {
  const Terminal terminal(20, {STDOUT_FILENO, STDERR_FILENO});
  const std::string shown = "\n\r" + line.substr(0, 19) + "\033[K\033[A\r";
  TerminalSink sink(true, now);
  sink.write("one\n..");
  sink.showProgress(progress);
  EXPECT_EQ(terminal.received(), "one\n.." + shown + "\033[2C");
  sink.write(".");
  EXPECT_EQ(terminal.received(), ".");
  sink.write("\n");
  EXPECT_EQ(terminal.received(), "\n\r\033[K\033[A\r\033[3C\n");
  sink.showProgress(progress);
  EXPECT_EQ(terminal.received(), shown);
  sink.write(std::string(21, '.'));  // over the end of the row
  sink.showProgress(progress);
  EXPECT_EQ(terminal.received(), "\n\r\033[K\033[A\r" + std::string(21, '.') + shown + "\033[1C");
}

TEST(TerminalSink, OnlyWhereSomebodyWatches) {
  EXPECT_FALSE(TerminalSink(true, std::chrono::hours(1)).wantsProgress());
  const auto shows = [](bool verbose) { return TerminalSink(verbose, now).wantsProgress(); };
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
  EXPECT_EQ(terminal.received(), "");
}

}  // namespace
