#include "platform/cuda/runtime/texture.h"

#include "platform/cuda/runtime/device.h"

namespace zel {

AbstractTexture::AbstractTexture(void* data, std::size_t bytes,
                                 const cudaChannelFormatDesc& channels) {
  cudaResourceDesc resource{};
  resource.resType = cudaResourceTypeLinear;
  resource.res.linear.devPtr = data;
  resource.res.linear.desc = channels;
  resource.res.linear.sizeInBytes = bytes;
  const cudaTextureDesc description{};
  zelSafeCall(cudaCreateTextureObject(&object, &resource, &description, nullptr));
}

AbstractTexture::~AbstractTexture() {
  if (object != 0) cudaDestroyTextureObject(object);
}

}  // namespace zel
