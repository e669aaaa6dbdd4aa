#include "support/published_texture.h"

#include "platform/host/texture_view.h"

namespace zeltest {

const double* publishedTexture(const cudaTextureObject_t& symbol) {
  return zel::textureData<double>(symbol);
}

}  // namespace zeltest
