// How the platform under test may be told to work otherwise.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace zeltest {

// What runs during() runs it with the setting; equal bits are promised, or equal results only.
struct PlatformSetting {
  std::string name;
  bool equalBits;
  std::function<void(const std::function<void()>& during)> apply;
};

// Numbers of threads, and instruction sets below the processor's best.
std::vector<PlatformSetting> platformSettings();

}  // namespace zeltest
