#include "platform/cuda/machine/device_turns.h"

#include <cuda_runtime.h>

#include "platform/cuda/runtime/device.h"

namespace zelsvm {

void DeviceTurns::select() const { zel::zelSafeCall(cudaSetDevice(device)); }

SymbolUser::~SymbolUser() {
  const std::scoped_lock locked(turns->lock);
  if (turns->last == this) turns->last = nullptr;
}

DeviceTurn::DeviceTurn(SymbolUser& user) : user(&user), locked(user.turns->lock) {
  user.turns->select();
}

void DeviceTurn::publish() {
  DeviceTurns& turns = *user->turns;
  turns.last = nullptr;
  user->publish();
  turns.last = user;
}

void DeviceTurn::publishIfLost() {
  if (user->turns->last != user) publish();
}

}  // namespace zelsvm
