#include "tools/platform_choice.h"

#include <dlfcn.h>

#include <cstdio>
#include <source_location>
#include <string_view>

#include "base/errors.h"
#include "base/output/console.h"
#include "platform/host/host_machine.h"
#include "threads/parallel.h"
#include "tools/engine_loader.h"

namespace zelsvm_main {
namespace {

// Cheaper to find out than by loading the engine with all its libraries: no driver, no device.
bool hasDriver() { return dlopen("libcuda.so.1", RTLD_LAZY | RTLD_LOCAL) != nullptr; }

const ZelsvmMachines* machinesWithDevice() {
  if (installedEngine().empty() || !hasDriver()) return nullptr;
  const LoadedEngine loaded = loadEngine();
  return loaded.machines != nullptr && loaded.machines->deviceCount() > 0 ? loaded.machines
                                                                          : nullptr;
}

// Null for the processor.
const ZelsvmMachines* chooseMachines(const char* wanted) {
  const std::string_view name = wanted == nullptr ? "" : wanted;
  if (name.empty()) return machinesWithDevice();
  if (name == "host") return nullptr;
  if (name != "cuda")
    zel::throwAppException("ZELSVM_PLATFORM must be host or cuda, not %s.", wanted);
  const LoadedEngine loaded = loadEngine();
  if (loaded.machines == nullptr) throw zel::AppException(loaded.refusal.c_str());
  return loaded.machines;
}

const zelsvm::Machine& processor(int device) {
  if (device != 0) {
    const auto here = std::source_location::current();
    throw zel::RuntimeException("zelSafeCall", "CUDA runtime error", "invalid device ordinal",
                                zel::sourceName(here).c_str(), static_cast<int>(here.line()));
  }
  return zelsvm::hostMachine();
}

}  // namespace

DeviceVerdict judgeDevice(const PlannedRun& run, unsigned threads) {
  if (run.asksForDevice) return {true, "The GPU is asked for by its number."};
  const RunSeconds seconds = estimatedSeconds(run, threads);
  char reason[160];
  std::snprintf(
      reason, sizeof reason,
      "Estimated seconds: %.1f on the GPU, %.1f on the processor; ZELSVM_PLATFORM=cuda or "
      "host decides otherwise.",
      seconds.device, seconds.processor);
  return {seconds.device < seconds.processor, reason};
}

MachineChoice choosePlatform(const char* wanted, const RunPlanner& planRun) {
  const ZelsvmMachines* const machines = chooseMachines(wanted);
  if (machines == nullptr) return processor;
  const auto open = [machines](int device) -> const zelsvm::Machine& {
    return *machines->open(device);
  };
  if (wanted != nullptr && *wanted != '\0') return open;
  const DeviceVerdict verdict = judgeDevice(planRun(), static_cast<unsigned>(zel::threadCount()));
  return [open, verdict](int device) -> const zelsvm::Machine& {
    if (zel::isVerbose()) zel::printMessage("%s\n", verdict.reason.c_str());
    return verdict.isTaken ? open(device) : processor(device);
  };
}

}  // namespace zelsvm_main
