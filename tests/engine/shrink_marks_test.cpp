// Shrinking: which variables are marked.
#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/host_vectors.h"
#include "zeldplus/inc/zeltexture_v2.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/smo_steps.h"

namespace {

using zel::DeviceVector;
using zeltest::hostVector;
using zeltest::valuesOf;

template <typename Symbol>
void publish(const Symbol& symbol, Symbol value) {
  EXPECT_EQ(cudaMemcpyToSymbol(symbol, &value, sizeof value), cudaSuccess);
}

class ShrinkMarks : public testing::TestWithParam<bool> {};

TEST_P(ShrinkMarks, FallOnBoundVariablesBeyondTheirClass) {
  const bool nu = GetParam();
  constexpr unsigned count = 5000;
  constexpr double Cp = 1;
  constexpr double Cn = 2;
  const double up[2] = {20, 10};  // of positive and negative variables; core: the first for all
  const double low[2] = {-30, 5};
  std::mt19937 generator(1);
  std::vector<double> alpha, gradient;
  std::vector<char2> status;
  std::vector<unsigned> active;
  std::vector<bool> expected(count);
  for (unsigned t = 0; t < count; ++t) {
    const bool positive = generator() % 2 == 0;
    const double c = positive ? Cp : Cn;
    const double v = static_cast<double>(generator() % 100) - 50;
    status.push_back({0, static_cast<signed char>(positive ? 1 : -1)});
    alpha.push_back(static_cast<double>(generator() % 3) / 2 * c);
    gradient.push_back(positive ? -v : v);
    if (generator() % 3 == 0) continue;
    active.push_back(t);
    const int cls = nu && !positive ? 1 : 0;
    const bool mayGrow = positive ? alpha[t] < c : alpha[t] > 0;
    const bool mayShrink = positive ? alpha[t] > 0 : alpha[t] < c;
    expected[t] = (!mayGrow && v > up[cls]) || (!mayShrink && v < low[cls]);
  }
  DeviceVector<double> deviceAlpha(hostVector(alpha));
  DeviceVector<double> deviceGradient(hostVector(gradient));
  DeviceVector<char2> deviceStatus(hostVector(status));
  DeviceVector<unsigned> deviceActive(hostVector(active));
  const zel::LinearTexture<double> alphaTexture(deviceAlpha);
  const zel::LinearTexture<double> gradientTexture(deviceGradient);
  const zel::LinearTexture<char2> statusTexture(deviceStatus);
  publish(zelsvm::zelsvm_Cp, Cp);
  publish(zelsvm::zelsvm_Cn, Cn);
  publish(zelsvm::zelsvm_tx_alpha, alphaTexture.handle());
  publish(zelsvm::zelsvm_tx_f, gradientTexture.handle());
  publish(zelsvm::zelsvm_tx_ys, statusTexture.handle());
  DeviceVector<zelsvm::SmoDelta<double>> delta(1);
  const auto steps = zelsvm::makeSmoSteps<double>(zelsvm::SVM_KERNEL_RADIAL, nu);
  steps->begin({count, count, Cp, Cn, deviceGradient.data(), deviceAlpha.data(),
                deviceStatus.data(), deviceActive.data(), delta.data(), nullptr});
  steps->activate(static_cast<unsigned>(active.size()));
  steps->reduce({0, {up[0], low[0]}}, {0, {up[1], low[1]}});
  const std::vector<char2> marked = valuesOf(deviceStatus);
  for (unsigned t = 0; t < count; ++t) {
    EXPECT_EQ(marked[t].x, expected[t] ? 1 : 0) << t;
    EXPECT_EQ(marked[t].y, status[t].y) << t;
  }
}

INSTANTIATE_TEST_SUITE_P(CoreAndNu, ShrinkMarks, testing::Bool());

}  // namespace
