// Which engine runs.
#pragma once

namespace zelsvm_main::inline ZEL_PLATFORM {

enum class Platform { host };

// The platform named by the value of ZELSVM_PLATFORM; null and the empty text leave the choice to
// us. Throws AppException for a platform that is unknown or not installed.
Platform choosePlatform(const char* wanted);

}  // namespace zelsvm_main::inline ZEL_PLATFORM
