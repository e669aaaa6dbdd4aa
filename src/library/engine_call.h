// How every function of the library enters the engine: one at a time, with the caller's sink, and
// with its failures as the library's exceptions.
#pragma once

#include <zelsvm/zelsvm.h>

#include <chrono>
#include <mutex>
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
  // Waits for other threads; throws AppException where the thread has its turn already, which is
  // where a sink calls the library.
  EngineTurn();
  ~EngineTurn();
  EngineTurn(const EngineTurn&) = delete;
  EngineTurn& operator=(const EngineTurn&) = delete;

 private:
  std::unique_lock<std::mutex> lock;
};

template <typename Body>
auto callEngine(const Sink& sink, Body body) {
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

}  // namespace zelsvm::detail
