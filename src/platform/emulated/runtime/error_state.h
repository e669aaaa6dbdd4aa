// The last error of the runtime's calls.
#pragma once

#include <cuda_runtime.h>

namespace zel {

// Keeps a failure for cudaGetLastError and returns it; success changes nothing.
cudaError_t recordError(cudaError_t error);

}  // namespace zel
