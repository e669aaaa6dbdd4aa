#include "support/platform_settings.h"

#include "platform/host/isa.h"
#include "support/thread_limit.h"

namespace zeltest {

std::vector<PlatformSetting> platformSettings() {
  std::vector<PlatformSetting> settings;
  for (const int threads : {1, 2, 3})
    settings.push_back({std::to_string(threads) + " threads", true, [threads](const auto& during) {
                          const ThreadLimit limit(threads);
                          during();
                        }});
  for (int set = 0; set < static_cast<int>(zel::processorIsa()); ++set)
    settings.push_back({"instruction set " + std::to_string(set), false, [set](const auto& during) {
                          const zel::IsaLimit limit(static_cast<zel::Isa>(set));
                          during();
                        }});
  return settings;
}

}  // namespace zeltest
