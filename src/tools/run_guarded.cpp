#include "tools/run_guarded.h"

#include <cstdio>
#include <cstdlib>
#include <exception>

#include "base/output/console.h"

namespace zelsvm_main {
namespace {

void report(const char* text) {
  zel::printMessage("%s\n", text);
  if (zel::isOutputLost()) std::fprintf(stderr, "%s\n", text);
}

void runReported(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    const char* const text = error.what();
    report(text == nullptr || *text == '\0' ? "Unknown exception" : text);
    throw;
  } catch (const zel::OutputClosed&) {
    throw;
  } catch (...) {
    report("Unknown error");
    throw;
  }
}

}  // namespace

int runGuarded(const std::function<void()>& body) noexcept {
  try {
    runReported(body);
    return zel::isOutputLost() ? EXIT_FAILURE : EXIT_SUCCESS;
  } catch (...) {
    return EXIT_FAILURE;
  }
}

}  // namespace zelsvm_main
