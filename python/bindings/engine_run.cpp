#include "engine_run.h"

#include <nanobind/nanobind.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

namespace nb = nanobind;

namespace zelpy {
namespace {

constexpr std::chrono::milliseconds signalInterval{20};

class Run {
 public:
  Run(const RunSettings& settings, const std::function<void(const zelsvm::Sink&)>& body)
      : settings(&settings), body(&body) {}

  // On the engine's thread.
  void operator()() {
    try {
      (*body)(sink());
    } catch (...) {
      failure = std::current_exception();
    }
    const std::lock_guard guard(mutex);
    isDone = true;
    done.notify_one();
  }

  // On the caller's, without the lock.
  void await() {
    std::unique_lock guard(mutex);
    while (!done.wait_for(guard, signalInterval, [&] { return isDone; })) {
      guard.unlock();
      if (!isStopped) checkSignals();
      guard.lock();
    }
  }

  void throwFailure() {
    if (signalled) std::rethrow_exception(signalled);
    if (failure) std::rethrow_exception(failure);
  }

 private:
  zelsvm::Sink sink() {
    const auto& message = settings->message;
    zelsvm::Sink sink{.verbose = static_cast<bool>(message)};
    sink.threads = settings->threads;
    sink.cancelled = &isStopped;
    if (message)
      sink.message = [&message](std::string_view text) {
        const nb::gil_scoped_acquire lock;
        message(std::string(text));
      };
    return sink;
  }

  void checkSignals() {
    const nb::gil_scoped_acquire lock;
    if (PyErr_CheckSignals() == 0) return;
    signalled = std::make_exception_ptr(nb::python_error());
    isStopped = true;
  }

  const RunSettings* settings;
  const std::function<void(const zelsvm::Sink&)>* body;
  std::atomic<bool> isStopped{false};
  std::exception_ptr failure;
  std::exception_ptr signalled;
  std::mutex mutex;
  std::condition_variable done;
  bool isDone = false;
};

}  // namespace

void runInterruptibly(const RunSettings& settings,
                      const std::function<void(const zelsvm::Sink&)>& body) {
  Run run(settings, body);
  {
    const nb::gil_scoped_release unlocked;
    std::thread engine(std::ref(run));
    run.await();
    engine.join();
  }
  run.throwFailure();
}

}  // namespace zelpy
