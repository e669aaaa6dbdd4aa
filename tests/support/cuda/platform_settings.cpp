#include "support/platform_settings.h"

namespace zeltest {

std::vector<PlatformSetting> platformSettings() { return {}; }

}  // namespace zeltest
