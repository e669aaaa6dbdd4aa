// Runs the engine without the interpreter's lock and looks out for Ctrl-C meanwhile.
#pragma once

#include <zelsvm/zelsvm.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace zelpy {

struct RunSettings {
  unsigned threads = 0;                                  // as in Sink
  std::function<void(const std::string&)> message = {};  // called under the interpreter's lock
};

// Calls body(sink) on a thread of its own while the calling one, which holds the interpreter's lock
// before and after, lets others have it. A signal handler's exception ends the run and reaches the
// caller; so do the body's.
void runInterruptibly(const RunSettings& settings,
                      const std::function<void(const zelsvm::Sink&)>& body);

template <typename Body>
auto interruptibly(const RunSettings& settings, const Body& body) {
  std::optional<decltype(body(zelsvm::Sink{}))> result;
  runInterruptibly(settings, [&](const zelsvm::Sink& sink) { result.emplace(body(sink)); });
  return std::move(*result);
}

}  // namespace zelpy
