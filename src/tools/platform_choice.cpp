#include "tools/platform_choice.h"

#include <dlfcn.h>

#include <source_location>
#include <string_view>

#include "base/errors.h"
#include "platform/host/host_machine.h"
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

MachineChoice choosePlatform(const char* wanted) {
  const ZelsvmMachines* const machines = chooseMachines(wanted);
  if (machines == nullptr) return processor;
  return [machines](int device) -> const zelsvm::Machine& { return *machines->open(device); };
}

}  // namespace zelsvm_main
