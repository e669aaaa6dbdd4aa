// How every function of the library enters the engine: with the caller's sink, and with its
// failures as the library's exceptions.
#pragma once

#include <zelsvm/zelsvm.h>

#include <atomic>
#include <chrono>
#include <string_view>

#include "base/errors.h"
#include "base/output/console.h"
#include "threads/crew.h"
#include "threads/stop.h"

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

// While it lives, the calling thread is in a call: what runs then is a sink.
class CallMark {
 public:
  // Throws AppException for a call from a sink: a thread's random numbers serve one run.
  CallMark();
  ~CallMark();
  CallMark(const CallMark&) = delete;
  CallMark& operator=(const CallMark&) = delete;
};

template <typename Body>
auto callEngine(const Sink& sink, Body body) {
  static const std::atomic<bool> never = false;
  const CallMark mark;
  CallerSink messages(sink);
  const zel::SinkScope scope(messages);
  const zel::StopScope stop(sink.cancelled != nullptr ? *sink.cancelled : never);
  const zel::CrewScope crew(sink.threads);
  try {
    if (stop.isSet()) throw zel::Stopped{};
    return body();
  } catch (const zel::Stopped&) {
    throw Cancelled();
  } catch (const zel::AppException& error) {
    throw AppException(error.what());
  } catch (const zel::RuntimeException& error) {
    throw RuntimeException(error.what());
  }
}

}  // namespace zelsvm::detail
