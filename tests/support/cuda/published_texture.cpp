#include "support/published_texture.h"

#include "zeldplus/inc/zeldev.h"

namespace zeltest {

const double* publishedTexture(const cudaTextureObject_t& symbol) {
  cudaTextureObject_t handle = 0;
  cudaResourceDesc resource{};
  zel::zelSafeCall(cudaMemcpyFromSymbol(&handle, static_cast<const void*>(&symbol), sizeof handle));
  zel::zelSafeCall(cudaGetTextureObjectResourceDesc(&resource, handle));
  return static_cast<const double*>(resource.res.linear.devPtr);
}

}  // namespace zeltest
