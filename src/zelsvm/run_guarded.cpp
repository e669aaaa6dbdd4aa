#include "zelsvm/run_guarded.h"

#include <cstdlib>
#include <exception>

#include "zeldplus/inc/zelconsole.h"

namespace zelsvm_main::inline ZEL_PLATFORM {
namespace {

void runReported(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    const char* const text = error.what();
    zel::printMessage("%s\n", text == nullptr || *text == '\0' ? "Unknown exception" : text);
    throw;
  } catch (const zel::OutputClosed&) {
    throw;
  } catch (...) {
    zel::printMessage("Unknown error\n");
    throw;
  }
}

}  // namespace

int runGuarded(const std::function<void()>& body) noexcept {
  try {
    runReported(body);
    return EXIT_SUCCESS;
  } catch (...) {
    return EXIT_FAILURE;
  }
}

}  // namespace zelsvm_main::inline ZEL_PLATFORM
