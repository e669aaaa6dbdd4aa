#include <gtest/gtest.h>

#include "platform/host/texture_view.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zeltexture_v2.h"

namespace {

using zel::DeviceVector;
using zel::LinearTexture;

TEST(Texture, SeesTheVector) {
  zelsvm::HostVector<double> host(3);
  host.fill(2.5);
  DeviceVector<double> doubles(host);
  const LinearTexture<double> texture(doubles);
  const double* const seen = zel::textureData<double>(texture.handle());
  ASSERT_NE(seen, nullptr);
  EXPECT_EQ(seen[2], 2.5);
  host.fill(4);
  doubles.copyFrom(host, 0, 0, 3);
  EXPECT_EQ(seen[0], 4) << "a view, not a copy";

  DeviceVector<char2> bytes(5);
  const LinearTexture<char2> other(bytes);
  EXPECT_NE(other.handle(), texture.handle());
  EXPECT_EQ(zel::textureMemory(other.handle()), bytes.data());
}

TEST(Texture, EndsWithItsObject) {
  DeviceVector<double> vector(1);
  cudaTextureObject_t handle = 0;
  {
    const LinearTexture<double> texture(vector);
    handle = texture.handle();
    ASSERT_NE(handle, 0U);
  }
  EXPECT_EQ(zel::textureMemory(handle), nullptr);
}

TEST(Texture, NeedsDeviceMemory) {
  double value = 0;
  DeviceVector<double> posing(1, &value);
  DeviceVector<double> empty;
  EXPECT_THROW(LinearTexture<double>{posing}, zel::RuntimeException);
  EXPECT_THROW(LinearTexture<double>{empty}, zel::RuntimeException);
  EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);  // the next launch is not to blame
}

}  // namespace
