#include "platform/cuda/runtime/answer.h"

#include "base/errors.h"
#include "platform/cuda/runtime/device.h"

namespace zel {

bool isRunning() {
  const cudaError_t state = cudaStreamQuery(nullptr);
  if (state != cudaErrorNotReady) zelSafeCall(state);
  return state == cudaErrorNotReady;
}

void throwUnanswered() { throw RuntimeException("The device has ended without an answer."); }

}  // namespace zel
