#include "platform/emulated/execution/block.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#include "platform/emulated/execution/planted_fault.h"
#include "platform/emulated/execution/race_model.h"
#include "platform/emulated/execution/shared_variables.h"
#include "platform/emulated/runtime/guard.h"

namespace zel::device {

constinit thread_local const Coordinates* current = nullptr;

namespace {

constexpr std::size_t sharedAlignment = 16;

thread_local Block* currentBlock = nullptr;

unsigned char* aligned(unsigned char* memory) {
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  return memory + (sharedAlignment - address % sharedAlignment) % sharedAlignment;
}

// What a counter orders by; several counters may share a place.
void* placeOf(const unsigned* counter) {
  static char places[64];
  return &places[(reinterpret_cast<std::uintptr_t>(counter) / sizeof *counter) % sizeof places];
}

}  // namespace

struct Block::Thread {
  Thread(Block& block, const Coordinates& coordinates, void* stack)
      : block(block), coordinates(coordinates), fiber(stack, stackBytes, runThread, this) {}

  Block& block;
  Coordinates coordinates;
  const char* waitsIn = nullptr;  // file and line of its last barrier
  unsigned waitsAt = 0;
  unsigned barriers = 0;  // so far
  unsigned fences = 0;
  bool hasFenced = false;
  unsigned* lastCounter = nullptr;
  Fiber fiber;
};

Block::Block(LaunchState& launch, std::uint64_t number)
    : launch(launch),
      random(launch.seed * 0x9E3779B97F4A7C15U + number),
      sharedStore(launch.sharedBytes + 2 * guardBytes + sharedAlignment),
      shared(aligned(sharedStore.data()) + guardBytes),
      stacks(launch.block.x) {
  const auto pattern = static_cast<unsigned>(launch.seed + number);
  fillGuard(shared - guardBytes);
  fillGuard(shared + launch.sharedBytes);
  poison(shared, launch.sharedBytes, pattern);
  if (!racesAreSought) poisonSharedVariables(pattern);
  const dim3 place{static_cast<unsigned>(number % launch.grid.x),
                   static_cast<unsigned>(number / launch.grid.x)};
  for (unsigned t = 0; t < launch.block.x; ++t)
    threads.push_back(std::make_unique<Thread>(
        *this, Coordinates{dim3{t, 0, 0}, dim3{place.x, place.y, 0}, launch.block, launch.grid},
        stacks.stack(t)));
}

Block::~Block() = default;

Block& Block::current() { return *currentBlock; }

void Block::runThread(void* argument) {
  Block& block = static_cast<Thread*>(argument)->block;
  (*block.launch.kernel)();
  publish(&block.end);
}

void Block::turn(Thread& thread) {
  active = &thread;
  device::current = &thread.coordinates;
  thread.fiber.resume();
}

void Block::run() {
  currentBlock = this;
  std::vector<Thread*> waiting;
  for (const auto& thread : threads) waiting.push_back(thread.get());
  while (!waiting.empty()) {
    std::shuffle(waiting.begin(), waiting.end(), random);
    for (Thread* const thread : waiting) turn(*thread);
    std::erase_if(waiting, [](const Thread* thread) { return thread->fiber.hasEnded(); });
    const auto elsewhere = [&](const Thread* thread) {
      return thread->waitsIn != waiting[0]->waitsIn || thread->waitsAt != waiting[0]->waitsAt;
    };
    if (const auto other = std::find_if(waiting.begin(), waiting.end(), elsewhere);
        other != waiting.end())
      launch.faults.add("threads of a block wait at different barriers, one of them in line",
                        &(*other)->coordinates, (*other)->waitsAt);
    ++turns;
  }
  observe(&end);
  if (!isGuardIntact(shared - guardBytes) || !isGuardIntact(shared + launch.sharedBytes))
    launch.faults.add("wrote beside the dynamic shared memory");
}

// Threads that have ended are not waited for.
void Block::wait(const std::source_location& where) {
  if (PlantedFault::omits(Synchronisation::barrier, ++active->barriers)) return;
  char* const place = &barriers[turns % 2];
  publish(place);
  active->waitsIn = where.file_name();
  active->waitsAt = where.line();
  active->fiber.suspend();
  observe(place);
}

// A fence before a counter's increment hands over what the thread has done so far; one after it
// receives what those who incremented it before handed over.
void Block::fence() {
  if (PlantedFault::omits(Synchronisation::fence, ++active->fences)) return;
  active->hasFenced = true;
  if (active->lastCounter != nullptr) observe(placeOf(active->lastCounter));
}

// The race detector does not watch the counter itself. A thread that sees its last value comes
// behind all others, and no call could tell the detector so.
unsigned Block::increment(unsigned* counter, unsigned limit) {
  if (active->hasFenced) publish(placeOf(counter));
  active->lastCounter = counter;
  const std::atomic_ref<unsigned> value(*counter);
  unsigned old = value.load(std::memory_order_relaxed);
  while (!value.compare_exchange_weak(old, old >= limit ? 0 : old + 1, std::memory_order_relaxed)) {
  }
  return old;
}

const LaunchTexture* Block::textureOf(cudaTextureObject_t handle, std::size_t bytes) {
  const std::size_t slot = textureSlot(handle);
  const LaunchTexture* const texture =
      slot < launch.textures.size() ? &launch.textures[slot] : nullptr;
  if (texture == nullptr || texture->view.handle != handle || texture->view.memory == nullptr) {
    launch.faults.add("fetched through a texture that is gone, handle", &active->coordinates,
                      static_cast<long long>(handle));
    return nullptr;
  }
  if (texture->view.texelBytes != bytes) {
    launch.faults.add("fetched a texel of another type, bytes", &active->coordinates,
                      static_cast<long long>(bytes));
    return nullptr;
  }
  return texture;
}

const void* Block::texel(cudaTextureObject_t handle, int index, std::size_t bytes) {
  static constexpr unsigned char zeros[16] = {};
  const LaunchTexture* const texture = textureOf(handle, bytes);
  if (texture == nullptr) return zeros;
  const std::size_t offset = static_cast<std::size_t>(index) * bytes;
  if (index < 0 || offset + bytes > texture->view.bytes) {
    launch.faults.add("fetched beyond a texture, texel", &active->coordinates, index);
    return zeros;
  }
  const unsigned char* const place = texture->view.memory + offset;
  if (std::memcmp(place, texture->before.data() + offset, bytes) != 0)
    launch.faults.add("fetched what the launch has written, texel", &active->coordinates, index);
  return place;
}

void waitForBlock(const std::source_location& where) { Block::current().wait(where); }
void fence() { Block::current().fence(); }
unsigned increment(unsigned* counter, unsigned limit) {
  return Block::current().increment(counter, limit);
}
const void* texel(cudaTextureObject_t texture, int index, std::size_t bytes) {
  return Block::current().texel(texture, index, bytes);
}
void* dynamicShared() { return Block::current().sharedMemory(); }

}  // namespace zel::device
