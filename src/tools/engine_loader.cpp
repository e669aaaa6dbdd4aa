#include "tools/engine_loader.h"

#include <dlfcn.h>

#include <filesystem>
#include <string_view>
#include <system_error>

namespace zelsvm_main {
namespace {

constexpr const char* moduleName = "libzelsvm-cuda.so";

bool fits(const ZelsvmMachines& machines) {
  return std::string_view(machines.version) == ZELSVM_VERSION &&
         machines.solverTaskBytes == sizeof(zelsvm::SolverTask) &&
         machines.decisionTaskBytes == sizeof(zelsvm::DecisionTask);
}

}  // namespace

std::string installedEngine() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) return {};
  const auto folder = program.parent_path();
  for (const auto& place : {folder, folder.parent_path() / "lib" / "zelsvm"})
    if (std::filesystem::exists(place / moduleName, error)) return place / moduleName;
  return {};
}

LoadedEngine loadEngine() {
  const std::string path = installedEngine();
  if (path.empty()) return {nullptr, "The CUDA engine is not part of this installation."};
  void* const module = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (module == nullptr) {
    const char* const reason = dlerror();
    return {nullptr, std::string("The CUDA engine cannot be loaded: ") + reason + "."};
  }
  const auto entry = reinterpret_cast<decltype(&zelsvmMachines)>(dlsym(module, "zelsvmMachines"));
  const ZelsvmMachines* const machines = entry == nullptr ? nullptr : entry();
  if (machines == nullptr || !fits(*machines))
    return {nullptr, "The CUDA engine belongs to another version of these tools."};
  return {machines, {}};
}

}  // namespace zelsvm_main
