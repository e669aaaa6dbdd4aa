// Messages: everything the tools and the engine say goes through printMessage to a sink.
#pragma once

#include <cstdint>
#include <string_view>

#include "threads/stop.h"

namespace zel {

// How far a running solver is.
struct SolveProgress {
  std::uint64_t iterations;
  double gap;  // the largest violation, which ends at or below the tolerance
  double tolerance;
  double cacheHitRate;
  std::uint64_t supportVectors;
  std::uint64_t pairs = 1;      // of labels, each with a solver run of its own
  std::uint64_t pairsDone = 0;  // of those
  double kernelValues = 0;      // made so far by working sets; 0 without them
};

// Receives messages as they are made, piece by piece, and progress.
class MessageSink {
 public:
  // verbose: informational lines are wanted, too.
  explicit MessageSink(bool verbose) : verbose(verbose) {}
  virtual ~MessageSink() = default;
  MessageSink(const MessageSink&) = delete;
  MessageSink& operator=(const MessageSink&) = delete;

  virtual void write(std::string_view text) = 0;
  // A sentence, without its full stop, about input that may not be what its author meant. It is
  // lost unless the sink has a place for it.
  virtual void warn(std::string_view /*sentence*/) {}
  // Whether the run whose messages these are should end now: asked often, answered fast.
  virtual bool isStopped() { return false; }
  // Whether a report of progress is welcome now; likewise.
  virtual bool wantsProgress() { return false; }
  virtual void showProgress(const SolveProgress& /*progress*/) {}

  const bool verbose;
};

// Thrown when standard output is a pipe that nobody reads on: the run ends quietly.
struct OutputClosed {};

// Standard output, flushed after every message. write() throws OutputClosed. Where standard output
// fails otherwise, as on a full disk, a sentence on standard error says so and this and all later
// messages are lost: what a run writes to files may still be worth its time.
class ConsoleSink : public MessageSink {
 public:
  using MessageSink::MessageSink;
  void write(std::string_view text) override;
};

// Whether messages were lost.
bool isOutputLost();

// The calling thread's messages go to the sink while this lives, then where they went before. Each
// thread starts with a verbose console; threads that work for another one are given its sink's
// verbosity and a sink of their own.
class SinkScope {
 public:
  // The sink must outlive the scope.
  explicit SinkScope(MessageSink& sink);
  ~SinkScope();
  SinkScope(const SinkScope&) = delete;
  SinkScope& operator=(const SinkScope&) = delete;

 private:
  MessageSink* before;
};

// Where the calling thread's messages go.
MessageSink& currentSink();

// Whether the calling thread's sink wants informational lines.
bool isVerbose();

// What the calling thread's sink says and does; the console stops nothing and shows no progress by
// itself. A StopScope stops, too.
bool isStopped();
bool wantsProgress();
void showProgress(const SolveProgress& progress);

// Formats into 8192 characters (longer text is cut) and writes them to the calling thread's sink.
void printMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Writes text of any length to the calling thread's sink as it is.
void writeMessage(std::string_view text);

// Hands the sentence to the calling thread's sink, which may end the run by an exception.
void warn(std::string_view sentence);

}  // namespace zel
