// Which machine runs.
#pragma once

#include <functional>
#include <string>

#include "platform/machine.h"
#include "tools/platform_estimate.h"

namespace zelsvm_main {

// The machine on a device; throws RuntimeException for a device that there is not.
using MachineChoice = std::function<const zelsvm::Machine&(int device)>;

using RunPlanner = std::function<PlannedRun()>;

// The platform named by the value of ZELSVM_PLATFORM: host, whose one device is the processor, or
// cuda. Null and the empty text leave the choice to us, and we take CUDA where its module is
// installed, finds a device and is estimated to end the planned run earlier; the choice then says
// so. Throws AppException for an unknown platform and for a CUDA engine that is wanted by name and
// not installed or not fit to run.
MachineChoice choosePlatform(const char* wanted, const RunPlanner& planRun);

// Whether the device is taken, and a sentence that says why.
struct DeviceVerdict {
  bool isTaken;
  std::string reason;
};
DeviceVerdict judgeDevice(const PlannedRun& run, unsigned threads);

}  // namespace zelsvm_main
