#include <cstdint>
#include <cstdlib>
#include <string>

#include "base/output/console.h"
#include "tools/flows/zelsvm_main.h"
#include "tools/options.h"
#include "tools/platform_choice.h"
#include "tools/process_setup.h"
#include "tools/run_guarded.h"
#include "tools/usage.h"

// Hybrid-graphics systems look for this name and, seeing 1, give us the discrete GPU.
extern "C" {
__attribute__((visibility("default"), used)) std::uint32_t NvOptimusEnablementCuda = 1;
}

int main(int argc, char** argv) {
  zelsvm_main::occupyStandardStreams();
  zelsvm_main::ignoreWriteSignals();
  zelsvm_main::removeUnfinishedFilesAtSignals();
  zelsvm_main::explainLackOfMemory();
  return zelsvm_main::runGuarded([&] {
    const zelsvm_opt::ZelSvmOpt options(argc, argv);
    const std::string answer = zelsvm_opt::answerTo(options);
    if (!answer.empty()) return zel::writeMessage(answer);
    const auto planRun = [&options] { return zelsvm_main::plannedRun(options); };
    zelsvm_main::ZelSvmMain<double>(
        options, zelsvm_main::choosePlatform(std::getenv("ZELSVM_PLATFORM"), planRun))
        .run();
  });
}
