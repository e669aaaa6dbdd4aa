#include "support/programs/tool_process.h"

#include <fcntl.h>
#include <pty.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <ostream>
#include <system_error>
#include <thread>

namespace zeltest {
namespace {

int checked(int result, const char* call) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), call);
  return result;
}

// An open file, closed at the end.
class Descriptor {
 public:
  Descriptor(int result, const char* call) : number(checked(result, call)) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(number); }
  [[nodiscard]] int get() const { return number; }

 private:
  int number;
};

// A file without a name, for what a process writes.
class Stream : public Descriptor {
 public:
  Stream() : Descriptor(memfd_create("stream", MFD_CLOEXEC), "memfd_create") {}
  [[nodiscard]] std::string text() const {
    std::string all(static_cast<std::size_t>(checked(int(lseek(get(), 0, SEEK_END)), "lseek")), 0);
    checked(static_cast<int>(pread(get(), all.data(), all.size(), 0)), "pread");
    return all;
  }
};

// A terminal's other side; `writing` becomes what a process writes to it through.
class Terminal : public Descriptor {
 public:
  explicit Terminal(int& writing) : Descriptor(makePair(writing), "openpty") {}
  // All that was written, once nobody can write any more.
  [[nodiscard]] std::string text() const {
    std::string all;
    char piece[256];
    for (ssize_t count; (count = read(get(), piece, sizeof piece)) > 0;)
      all.append(piece, static_cast<std::size_t>(count));
    return all;
  }

 private:
  static int makePair(int& writing) {
    int reading = -1;
    checked(openpty(&reading, &writing, nullptr, nullptr, nullptr), "openpty");
    for (const int end : {reading, writing}) checked(fcntl(end, F_SETFD, FD_CLOEXEC), "fcntl");
    return reading;
  }
};

// Where a process that shall not be heard writes.
int refusingOutput(Output output) {
  if (output == Output::fullDevice) return open("/dev/full", O_WRONLY | O_CLOEXEC);
  int ends[2];
  checked(pipe2(ends, O_CLOEXEC), "pipe2");
  close(ends[0]);
  return ends[1];
}

int copyOf(int descriptor) { return fcntl(descriptor, F_DUPFD_CLOEXEC, 3); }

pid_t start(std::vector<std::string> words, const std::filesystem::path& folder, int out, int err) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, out, 1);
  posix_spawn_file_actions_adddup2(&actions, err, 2);
  posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
  pid_t child = 0;
  const int error = posix_spawn(&child, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::system_error(error, std::generic_category(), words[0]);
  return child;
}

// The status that the process ended with; it is killed at the limit.
int statusAfter(pid_t child, std::chrono::seconds limit, bool& timedOut) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (checked(waitpid(child, &status, timedOut ? 0 : WNOHANG), "waitpid") == 0) {
    std::this_thread::sleep_for(std::chrono::microseconds(500));
    timedOut = std::chrono::steady_clock::now() > deadline;
    if (timedOut) kill(child, SIGKILL);
  }
  return status;
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
  std::vector<std::string> words;
  if (!settings.environment.empty()) words.emplace_back("/usr/bin/env");
  for (const auto& [name, value] : settings.environment) words.push_back(name + "=" + value);
  const bool isPath = program.find('/') != std::string::npos;
  words.push_back(isPath ? program : std::string(ZEL_TOOL_DIR) + "/" + program);
  words.insert(words.end(), arguments.begin(), arguments.end());
  const Stream out;
  const Stream err;
  std::optional<Terminal> terminal;
  int errorTarget = -1;
  settings.terminal ? void(terminal.emplace(errorTarget)) : void(errorTarget = copyOf(err.get()));
  ToolResult result;
  int status = 0;
  {
    const bool heard = settings.output == Output::collected;
    const Descriptor output(heard ? copyOf(out.get()) : refusingOutput(settings.output), "output");
    const Descriptor errors(errorTarget, "errors");
    const pid_t child = start(words, folder(), output.get(), errors.get());
    status = statusAfter(child, settings.limit, result.timedOut);
  }
  if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  result.out = out.text();
  result.err = terminal ? terminal->text() : err.text();
  return result;
}

}  // namespace zeltest
