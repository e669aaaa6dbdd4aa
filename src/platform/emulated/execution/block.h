// Runs the threads of one block.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <source_location>
#include <vector>

#include "platform/emulated/execution/fiber.h"
#include "platform/emulated/execution/launch_state.h"
#include "platform/emulated/execution/stacks.h"

namespace zel::device {

// Its threads are fibers of the thread that runs it, which take turns at barriers, in an order that
// changes from turn to turn.
class Block {
 public:
  Block(LaunchState& launch, std::uint64_t number);
  ~Block();
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;

  void run();

  // What the thread whose turn it is asks for.
  void wait(const std::source_location& where);
  void fence();
  unsigned increment(unsigned* counter, unsigned limit);
  const void* texel(cudaTextureObject_t handle, int index, std::size_t bytes);
  [[nodiscard]] void* sharedMemory() { return shared; }

  // The block that the calling thread runs.
  static Block& current();

 private:
  struct Thread;
  static void runThread(void* argument);
  void turn(Thread& thread);
  void checkBarrier();
  const LaunchTexture* textureOf(cudaTextureObject_t handle, std::size_t bytes);

  LaunchState& launch;
  std::mt19937_64 random;
  Thread* active = nullptr;
  std::vector<unsigned char> sharedStore;
  unsigned char* shared;
  Stacks stacks;
  std::vector<std::unique_ptr<Thread>> threads;
  unsigned turns = 0;
  // Places that the race detector orders by: barriers in turn, and the end.
  char barriers[2] = {};
  char end = 0;
};

}  // namespace zel::device
