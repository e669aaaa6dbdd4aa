#include "tools/tool_process.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <ostream>
#include <system_error>

namespace zeltest {
namespace {

using Clock = std::chrono::steady_clock;

int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

// An open file, closed at the end.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number(number) {}
  Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number, other.number);
    return *this;
  }
  ~Descriptor() { close(); }
  void close() {
    if (number >= 0) ::close(std::exchange(number, -1));
  }
  [[nodiscard]] int get() const { return number; }

 private:
  int number = -1;
};

struct Pipe {
  Descriptor reading, writing;
};

Pipe makePipe() {
  int ends[2];
  checked(pipe2(ends, O_CLOEXEC), "pipe2");
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

// A terminal to write to, and what it receives.
Pipe makeTerminal() {
  int reading = -1;
  int writing = -1;
  checked(openpty(&reading, &writing, nullptr, nullptr, nullptr), "openpty");
  for (const int end : {reading, writing}) checked(fcntl(end, F_SETFD, FD_CLOEXEC), "fcntl");
  return {Descriptor(reading), Descriptor(writing)};
}

// A file without a name that holds the text, at its beginning.
Descriptor inputFile(const std::string& text) {
  Descriptor file(checked(memfd_create("input", MFD_CLOEXEC), "memfd_create"));
  if (write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    checked(-1, "write");
  checked(static_cast<int>(lseek(file.get(), 0, SEEK_SET)), "lseek");
  return file;
}

std::vector<char*> pointers(std::vector<std::string>& words) {
  std::vector<char*> result;
  for (std::string& word : words) result.push_back(word.data());
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environmentWith(
    const std::vector<std::pair<std::string, std::string>>& changes) {
  std::vector<std::string> result;
  for (const auto& [name, value] : changes) result.push_back(name + "=" + value);
  const auto isChanged = [&changes](const std::string& entry) {
    return std::any_of(changes.begin(), changes.end(), [&entry](const auto& change) {
      return entry.starts_with(change.first + "=");
    });
  };
  for (char** entry = environ; *entry != nullptr; ++entry)
    if (!isChanged(*entry)) result.emplace_back(*entry);
  return result;
}

// All that the child needs, prepared before the fork.
struct Launch {
  std::vector<std::string> words, variables;
  const char* folder;
  std::array<int, 3> streams;
};

[[noreturn]] void becomeProgram(Launch& launch, char* const* argv, char* const* envp) {
  std::signal(SIGPIPE, SIG_DFL);
  for (int i = 0; i < 3; ++i) dup2(launch.streams[static_cast<std::size_t>(i)], i);
  if (chdir(launch.folder) == 0) execve(argv[0], argv, envp);
  constexpr char text[] = "cannot start the program\n";
  _exit(write(2, text, sizeof text - 1) < 0 ? 126 : 127);
}

pid_t start(Launch& launch) {
  const auto argv = pointers(launch.words);
  const auto envp = pointers(launch.variables);
  const pid_t child = checked(fork(), "fork");
  if (child == 0) becomeProgram(launch, argv.data(), envp.data());
  return child;
}

// Takes what there is to read; false at the end of the stream.
bool readSome(int from, std::string& text) {
  char buffer[65536];
  const ssize_t count = read(from, buffer, sizeof buffer);
  if (count > 0) text.append(buffer, static_cast<std::size_t>(count));
  return count > 0 || (count < 0 && errno == EINTR);
}

// Reads both streams to their ends; false when the deadline came first.
bool collect(int out, int err, Clock::time_point deadline, ToolResult& result) {
  std::array<pollfd, 2> streams = {{{out, POLLIN, 0}, {err, POLLIN, 0}}};
  const std::array<std::string*, 2> texts = {&result.out, &result.err};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (left.count() <= 0) return false;
    if (poll(streams.data(), streams.size(), static_cast<int>(left.count())) < 0) continue;
    for (std::size_t i = 0; i < streams.size(); ++i)
      if (streams[i].revents != 0 && !readSome(streams[i].fd, *texts[i])) streams[i].fd = -1;
  }
  return true;
}

void takeStatus(int raw, ToolResult& result) {
  if (WIFEXITED(raw)) result.status = WEXITSTATUS(raw);
  if (WIFSIGNALED(raw)) result.signal = WTERMSIG(raw);
}

}  // namespace

void PrintTo(const ToolResult& result, std::ostream* stream) {
  *stream << "status " << result.status << ", signal " << result.signal
          << (result.timedOut ? ", timed out" : "") << "\nstdout:\n"
          << result.out << "stderr:\n"
          << result.err;
}

ToolResult Workspace::run(const std::string& program, const std::vector<std::string>& arguments,
                          const RunSettings& settings) const {
  Pipe out = makePipe();
  Pipe err = settings.terminal ? makeTerminal() : makePipe();
  const Descriptor input = inputFile(settings.input);
  if (settings.output == Output::closedPipe) out.reading.close();
  if (settings.output == Output::fullDevice)
    out.writing = Descriptor(checked(open("/dev/full", O_WRONLY | O_CLOEXEC), "open"));

  const bool isPath = program.find('/') != std::string::npos;
  Launch launch{{isPath ? program : std::string(ZEL_TOOL_DIR) + "/" + program},
                environmentWith(settings.environment),
                root.c_str(),
                {input.get(), out.writing.get(), err.writing.get()}};
  launch.words.insert(launch.words.end(), arguments.begin(), arguments.end());
  const auto deadline = Clock::now() + settings.limit;
  const pid_t child = start(launch);
  out.writing.close();
  err.writing.close();

  ToolResult result;
  result.timedOut = !collect(out.reading.get(), err.reading.get(), deadline, result);
  if (result.timedOut) kill(child, SIGKILL);
  int raw = 0;
  checked(waitpid(child, &raw, 0), "waitpid");
  takeStatus(raw, result);
  return result;
}

}  // namespace zeltest
