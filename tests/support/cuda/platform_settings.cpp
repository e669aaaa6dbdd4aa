#include "support/platform_settings.h"

namespace zeltest {

std::vector<PlatformSetting> platformSettings() { return {}; }

const bool rowsAreGuessed = false;

}  // namespace zeltest
