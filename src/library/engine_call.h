// How every function of the library enters the engine: one at a time, with the caller's sink, and
// with its failures as the library's exceptions.
#pragma once

#include <zelsvm/zelsvm.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::detail {

// Hands messages and progress on to the caller's functions.
class CallerSink : public zel::MessageSink {
 public:
  explicit CallerSink(const Sink& sink)
      : MessageSink(sink.verbose), sink(&sink), start(Clock::now()), next(start) {}

  void write(std::string_view text) override {
    if (sink->message) sink->message(text);
  }
  bool wantsProgress() override { return sink->progress && Clock::now() >= next; }
  void showProgress(const zel::SolveProgress& progress) override;

 private:
  using Clock = std::chrono::steady_clock;

  const Sink* sink;
  Clock::time_point start;
  Clock::time_point next;
};

// The engine's turn of the calling thread.
class EngineTurn {
 public:
  // Waits for other threads.
  EngineTurn();
  ~EngineTurn();
  EngineTurn(const EngineTurn&) = delete;
  EngineTurn& operator=(const EngineTurn&) = delete;

  // Whether the thread has its turn already, which is so where a sink runs.
  static bool isTaken();

 private:
  std::lock_guard<std::mutex> lock;
};

template <typename Body>
auto callEngine(const Sink& sink, Body body) {
  if (EngineTurn::isTaken()) throw AppException("A sink must not call the library.");
  const EngineTurn turn;
  CallerSink messages(sink);
  const zel::SinkScope scope(messages);
  try {
    return body();
  } catch (const zel::AppException& error) {
    throw AppException(error.what());
  } catch (const zel::RuntimeException& error) {
    throw RuntimeException(error.what());
  }
}

// Destroys what the engine made, in a turn of its own unless this is one.
template <typename Object>
void dispose(std::unique_ptr<Object>& object) {
  if (!object) return;
  std::optional<EngineTurn> turn;
  if (!EngineTurn::isTaken()) turn.emplace();
  object.reset();
}

}  // namespace zelsvm::detail
