#include "zelsvm/platform_choice.h"

#include <string_view>

#include "zeldplus/inc/zelerrors.h"

namespace zelsvm_main::inline ZEL_PLATFORM {

Platform choosePlatform(const char* wanted) {
  const std::string_view name = wanted == nullptr ? "" : wanted;
  if (name.empty() || name == "host") return Platform::host;
  if (name == "cuda") zel::throwAppException("The CUDA engine is not part of this installation.");
  zel::throwAppException("ZELSVM_PLATFORM must be host or cuda, not %s.", wanted);
}

}  // namespace zelsvm_main::inline ZEL_PLATFORM
