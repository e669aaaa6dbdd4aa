#include "platform/emulated/execution/launch.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

#include "platform/emulated/execution/block.h"
#include "platform/emulated/execution/race_model.h"
#include "platform/emulated/runtime/allocations.h"
#include "platform/emulated/runtime/error_state.h"

namespace zel::device {
namespace {

// Threads of the process at a time; blocks on the same one are ordered by it.
constexpr std::size_t mostRunners = 64;
constexpr std::uint64_t mostRows = 65535;

thread_local std::string faults;

std::atomic<std::uint64_t>& seedCounter() {
  static std::atomic<std::uint64_t> seed = [] {
    const char* const text = std::getenv("ZELSVM_DEVICE_SEED");
    return text == nullptr ? 1 : std::strtoull(text, nullptr, 10);
  }();
  return seed;
}

bool isShape(const dim3& grid, const dim3& block, std::size_t sharedBytes) {
  return grid.x > 0 && grid.y > 0 && grid.y <= mostRows && grid.z == 1 && block.x > 0 &&
         block.x <= mostThreads && block.y == 1 && block.z == 1 && sharedBytes <= mostShared;
}

std::vector<LaunchTexture> launchTextures() {
  std::vector<LaunchTexture> textures;
  for (const TextureView& view : textureViews()) {
    textures.push_back({view, {}});
    if (view.memory != nullptr)
      textures.back().before.assign(view.memory, view.memory + view.bytes);
  }
  return textures;
}

// A thread of the process per block where races are sought, else one for all of them.
void runBlocks(LaunchState& launch) {
  std::vector<std::uint64_t> order(std::uint64_t{launch.grid.x} * launch.grid.y);
  std::iota(order.begin(), order.end(), 0);
  std::shuffle(order.begin(), order.end(), std::mt19937_64(launch.seed));
  const std::size_t share = racesAreSought ? 1 : order.size();
  const auto run = [&](std::size_t first) {
    for (std::size_t k = first; k < first + share; ++k) Block(launch, order[k]).run();
  };
  for (std::size_t first = 0; first < order.size(); first += mostRunners * share) {
    const std::size_t end = std::min(order.size(), first + mostRunners * share);
    std::vector<std::jthread> runners;
    for (std::size_t k = first; k < end; k += share) runners.emplace_back(run, k);
  }
}

}  // namespace

cudaError_t launch(const dim3& grid, const dim3& block, std::size_t sharedBytes,
                   const std::function<void()>& kernel) try {
  if (!isShape(grid, block, sharedBytes)) return recordError(cudaErrorInvalidConfiguration);
  LaunchState state{grid, block, sharedBytes, &kernel, seedCounter()++, launchTextures(), {}};
  runBlocks(state);
  if (!Allocations::instance().guardsHold()) state.faults.add("wrote beside an allocation");
  faults = state.faults.lines();
  if (state.faults.isEmpty()) return cudaSuccess;
  std::fprintf(stderr, "device code with seed %llu:\n%s",
               static_cast<unsigned long long>(state.seed), faults.c_str());
  return recordError(cudaErrorLaunchFailure);
} catch (const std::exception&) {
  return recordError(cudaErrorUnknown);
}

const std::string& lastFaults() { return faults; }
std::uint64_t nextSeed() { return seedCounter(); }
void setNextSeed(std::uint64_t seed) { seedCounter() = seed; }

void FaultLog::add(const char* text, const Coordinates* thread, long long number) {
  const std::size_t place = count.fetch_add(1, std::memory_order_relaxed);
  if (place >= first.size()) return;
  first[place] = {text, number, thread != nullptr, {}};
  if (thread != nullptr) first[place].thread = *thread;
}

std::string FaultLog::lines() const {
  std::string text;
  for (std::size_t k = 0; k < std::min(first.size(), count.load()); ++k) {
    const auto& [what, number, hasThread, thread] = first[k];
    char where[128] = "";
    if (hasThread)
      std::snprintf(where, sizeof where, " %lld (block %u %u, thread %u)", number,
                    thread.blockIdx.x, thread.blockIdx.y, thread.threadIdx.x);
    text += what + std::string(where) + "\n";
  }
  return text;
}

}  // namespace zel::device
