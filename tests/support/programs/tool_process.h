// Runs the built tools from outside, as processes in a folder of their own.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "support/temp_folder.h"

namespace zeltest {

// Where a process's standard output goes: collected, to a pipe that nobody reads, or to a device
// that is always full.
enum class Output { collected, closedPipe, fullDevice };

struct RunSettings {
  std::vector<std::pair<std::string, std::string>> environment{};  // set on top of our own
  Output output = Output::collected;
  bool terminal = false;  // standard error is a terminal
  std::chrono::seconds limit{120};
};

struct ToolResult {
  int status = -1;  // exit status; -1 when a signal ended the process
  int signal = 0;
  bool timedOut = false;  // killed at the limit
  std::string out;
  std::string err;
};

// Shows everything about a run when an assertion fails.
void PrintTo(const ToolResult& result, std::ostream* stream);

// A folder to run tools in.
class Workspace : public TempFolder {
 public:
  // Names of all files here, sorted.
  [[nodiscard]] std::vector<std::string> files() const;
  // Puts a copy of the program file here under another name.
  void copyProgram(const std::string& name) const;

  // Runs a built tool by its name, or with a "/" in it the program at this path, in this folder.
  // Throws std::system_error when the process cannot be started.
  [[nodiscard]] ToolResult run(const std::string& program,
                               const std::vector<std::string>& arguments = {},
                               const RunSettings& settings = {}) const;
};

}  // namespace zeltest
