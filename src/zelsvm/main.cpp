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
  return zelsvm_main::runGuarded([&] {
    const zelsvm_opt::ZelSvmOpt options(argc, argv);
    switch (zelsvm_main::choosePlatform(std::getenv("ZELSVM_PLATFORM"))) {
      case zelsvm_main::Platform::host:
        zelsvm_main::ZelSvmMain<double>(options).run();
    }
  });
}
