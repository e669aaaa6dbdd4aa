// What the device context names to the kernels.
#pragma once

#include <cuda_runtime.h>

namespace zeltest {

// Device memory behind the texture whose handle was copied to the symbol.
const double* publishedTexture(const cudaTextureObject_t& symbol);

}  // namespace zeltest
