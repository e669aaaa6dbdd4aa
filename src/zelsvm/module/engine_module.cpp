#include "zelsvm/engine_module.h"

#include <cuda_runtime.h>

#include "zelsvm/driver/zelsvm_main.h"
#include "zelsvm/run_guarded.h"

namespace {

int deviceCount() {
  int count = 0;
  return cudaGetDeviceCount(&count) == cudaSuccess ? count : 0;
}

int run(const zelsvm_opt::ZelSvmOpt* options) {
  return zelsvm_main::runGuarded([=] { zelsvm_main::ZelSvmMain<double>(*options).run(); });
}

constexpr ZelsvmEngine engine = {ZELSVM_VERSION, sizeof(zelsvm_opt::ZelSvmOpt), deviceCount, run};

}  // namespace

extern "C" __attribute__((visibility("default"))) const ZelsvmEngine* zelsvmEngine() {
  return &engine;
}
