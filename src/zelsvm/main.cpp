#include <csignal>
#include <cstdint>
#include <cstdlib>

#include "zelsvm/driver/zelsvm_main.h"
#include "zelsvm/options.h"
#include "zelsvm/platform_choice.h"
#include "zelsvm/run_guarded.h"

// Hybrid-graphics systems look for this name and, seeing 1, give us the discrete GPU.
extern "C" {
__attribute__((visibility("default"), used)) std::uint32_t NvOptimusEnablementCuda = 1;
}

int main(int argc, char** argv) {
  // A reader that went away is an error we see, not a signal that kills us.
  std::signal(SIGPIPE, SIG_IGN);
  int engineStatus = EXIT_SUCCESS;
  const int status = zelsvm_main::runGuarded([&] {
    const zelsvm_opt::ZelSvmOpt options(argc, argv);
    const ZelsvmEngine* const engine = zelsvm_main::chooseEngine(std::getenv("ZELSVM_PLATFORM"));
    if (engine != nullptr)
      engineStatus = engine->run(&options);
    else
      zelsvm_main::ZelSvmMain<double>(options).run();
  });
  return status == EXIT_SUCCESS ? engineStatus : status;
}
