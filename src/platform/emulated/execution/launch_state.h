// What the device threads of a launch have in common.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/emulated/execution/device_code.h"
#include "platform/emulated/runtime/textures.h"

namespace zel::device {

// Faults of device threads. Reporting one orders nothing, so that the race detector stays sharp.
class FaultLog {
 public:
  // The text is a constant that a number follows where a thread did it.
  void add(const char* text, const Coordinates* thread = nullptr, long long number = 0);
  // A line each; the first ones, where there are many.
  [[nodiscard]] std::string lines() const;
  [[nodiscard]] bool isEmpty() const { return count.load(std::memory_order_relaxed) == 0; }

 private:
  struct Fault {
    const char* text;
    long long number;
    bool hasThread;
    Coordinates thread;
  };
  std::array<Fault, 4> first{};
  std::atomic<std::size_t> count = 0;
};

// A texture and what its memory held before the launch.
struct LaunchTexture {
  TextureView view;
  std::vector<unsigned char> before;
};

struct LaunchState {
  dim3 grid;
  dim3 block;
  std::size_t sharedBytes;
  const std::function<void()>* kernel;
  std::uint64_t seed;
  std::vector<LaunchTexture> textures;  // by slot
  FaultLog faults;
};

}  // namespace zel::device
