#include "zelsvm/platform_choice.h"

#include <dlfcn.h>

#include <string_view>

#include "zeldplus/inc/zelerrors.h"
#include "zelsvm/engine_loader.h"

namespace zelsvm_main::inline ZEL_PLATFORM {
namespace {

// Cheaper to find out than by loading the engine with all its libraries: no driver, no device.
bool hasDriver() { return dlopen("libcuda.so.1", RTLD_LAZY | RTLD_LOCAL) != nullptr; }

const ZelsvmEngine* engineWithDevice() {
  if (installedEngine().empty() || !hasDriver()) return nullptr;
  const LoadedEngine loaded = loadEngine();
  return loaded.engine != nullptr && loaded.engine->deviceCount() > 0 ? loaded.engine : nullptr;
}

}  // namespace

const ZelsvmEngine* chooseEngine(const char* wanted) {
  const std::string_view name = wanted == nullptr ? "" : wanted;
  if (name.empty()) return engineWithDevice();
  if (name == "host") return nullptr;
  if (name != "cuda")
    zel::throwAppException("ZELSVM_PLATFORM must be host or cuda, not %s.", wanted);
  const LoadedEngine loaded = loadEngine();
  if (loaded.engine == nullptr) throw zel::AppException(loaded.refusal.c_str());
  return loaded.engine;
}

}  // namespace zelsvm_main::inline ZEL_PLATFORM
