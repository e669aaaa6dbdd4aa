// The solvers' device kernels on problems of several chunks, against plain loops.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/inc/zeltexture_v2.h"
#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/device_context.h"
#include "zeldplus/zelsvm/engine/smo_kernels.h"

namespace {

using zel::DeviceVector;
using zelsvm::HostVector;

constexpr double Cp = 1;
constexpr double Cn = 2;
constexpr double infinity = std::numeric_limits<double>::infinity();

template <typename T>
DeviceVector<T> onDevice(std::vector<T>& values) {
  return DeviceVector<T>(HostVector<T>(values.size(), values.data()));
}

template <typename T>
std::vector<T> fromDevice(const DeviceVector<T>& source) {
  std::vector<T> values(source.size());
  HostVector<T>(values.size(), values.data()).copyFrom(source, 0, 0, values.size());
  return values;
}

template <typename T>
T firstOf(const DeviceVector<T>& source) {
  return fromDevice(source).front();
}

// A regression's state half-way, on the host and on the device. Gradients take few values, so that
// variables of different chunks tie.
class KernelState {
 public:
  KernelState(unsigned samples, bool listed) : samples(samples), l(2 * samples) {
    std::mt19937 generator(samples);
    const auto few = [&](unsigned values) { return static_cast<double>(generator() % values); };
    for (unsigned k = 0; k < l; ++k) {
      y.push_back({0, static_cast<signed char>(generator() % 2 == 0 ? 1 : -1)});
      alpha.push_back(few(3) / 2 * (y[k].y > 0 ? Cp : Cn));
      gradient.push_back(few(100) - 50);
      if (!listed || generator() % 3 != 0) active.push_back(k);
    }
    for (unsigned k = 0; k < samples; ++k) {
      diagonal.push_back(2 + few(3));
      for (auto& row : rows) row.push_back(few(5) / 4 - 0.5);
    }
    publish();
  }

  [[nodiscard]] double v(unsigned t) const { return -y[t].y * gradient[t]; }
  [[nodiscard]] double bound(unsigned t) const { return y[t].y > 0 ? Cp : Cn; }
  [[nodiscard]] bool canRise(unsigned t) const {
    return y[t].y > 0 ? alpha[t] < bound(t) : alpha[t] > 0;
  }
  [[nodiscard]] bool canFall(unsigned t) const {
    return y[t].y > 0 ? alpha[t] > 0 : alpha[t] < bound(t);
  }

  unsigned samples;
  unsigned l;
  std::vector<double> alpha, gradient, diagonal, rows[2];
  std::vector<char2> y;
  std::vector<unsigned> active;
  DeviceVector<double> deviceAlpha, deviceGradient, deviceDiagonal, deviceRows[2];
  DeviceVector<char2> deviceStatus;
  DeviceVector<unsigned> deviceActive;

 private:
  template <typename Symbol>
  static void set(const Symbol& symbol, const std::type_identity_t<Symbol>& value) {
    zel::zelSafeCall(cudaMemcpyToSymbol(symbol, &value, sizeof value));
  }

  void publish() {
    deviceAlpha = onDevice(alpha);
    deviceGradient = onDevice(gradient);
    deviceDiagonal = onDevice(diagonal);
    deviceStatus = onDevice(y);
    deviceActive = onDevice(active);
    for (const int c : {0, 1}) deviceRows[c] = onDevice(rows[c]);
    textures = {std::make_unique<zel::LinearTexture<double>>(deviceAlpha),
                std::make_unique<zel::LinearTexture<double>>(deviceGradient),
                std::make_unique<zel::LinearTexture<double>>(deviceDiagonal)};
    statusTexture = std::make_unique<zel::LinearTexture<char2>>(deviceStatus);
    set(zelsvm::zelsvm_N, samples);
    set(zelsvm::zelsvm_Cp, Cp);
    set(zelsvm::zelsvm_Cn, Cn);
    set(zelsvm::zelsvm_tx_alpha, textures[0]->handle());
    set(zelsvm::zelsvm_tx_f, textures[1]->handle());
    set(zelsvm::zelsvm_tx_norm, textures[2]->handle());
    set(zelsvm::zelsvm_tx_ys, statusTexture->handle());
  }

  std::array<std::unique_ptr<zel::LinearTexture<double>>, 3> textures;
  std::unique_ptr<zel::LinearTexture<char2>> statusTexture;
};

// First selection of the variables with this sign (0: all).
struct Selected {
  double up = -infinity;
  double low = infinity;
  unsigned index = zelsvm::noIndex;

  Selected(const KernelState& state, int sign) {
    for (const unsigned t : state.active) {
      if (sign != 0 && state.y[t].y != sign) continue;
      if (state.canRise(t) && state.v(t) > up) {
        up = state.v(t);
        index = t;
      }
      if (state.canFall(t)) low = std::min(low, state.v(t));
    }
  }
};

template <bool nu, bool unitDiagonal>
void checkSearch(KernelState& state) {
  constexpr unsigned grid = 8;
  const auto activeCount = static_cast<unsigned>(state.active.size());
  const Selected expected[2] = {Selected(state, nu ? 1 : 0), Selected(state, nu ? -1 : 0)};
  DeviceVector<zelsvm::SmoUpperBeta<double>> upper[2] = {
      DeviceVector<zelsvm::SmoUpperBeta<double>>(grid),
      DeviceVector<zelsvm::SmoUpperBeta<double>>(grid)};
  DeviceVector<unsigned> index[2] = {DeviceVector<unsigned>(grid), DeviceVector<unsigned>(grid)};
  const int second = nu ? 1 : 0;
  zel::launch(zelsvm::selectSmoWorkingSetKernel<double, nu>, {grid, 32, nu ? 1024 : 512},
              upper[0].data(), index[0].data(), upper[second].data(), index[second].data(),
              state.deviceActive.data(), activeCount);
  for (int c = 0; c <= second; ++c) {
    EXPECT_EQ(firstOf(upper[c]).up, expected[c].up);
    EXPECT_EQ(firstOf(upper[c]).low, expected[c].low);
    EXPECT_EQ(firstOf(index[c]), expected[c].index);
  }

  const auto diagonal = [&](unsigned t) {
    return unitDiagonal ? 1 : state.diagonal[t % state.samples];
  };
  const auto classOf = [&](unsigned t) { return nu && state.y[t].y < 0 ? 1 : 0; };
  const auto curvature = [&](unsigned t) {
    const int c = classOf(t);
    const double q = diagonal(expected[c].index) + diagonal(t) -
                     2 * state.rows[c][t % state.samples];
    return q <= 0 ? 1e-12 : q;
  };
  double best = infinity;
  unsigned j = zelsvm::noIndex;
  for (const unsigned t : state.active) {
    const double b = expected[classOf(t)].up - state.v(t);
    if (state.canFall(t) && b > 0 && -(b * b) / curvature(t) < best) {
      best = -(b * b) / curvature(t);
      j = t;
    }
  }
  ASSERT_NE(j, zelsvm::noIndex);
  const unsigned i = expected[classOf(j)].index;

  DeviceVector<zelsvm::SmoDelta<double>> delta(1);
  DeviceVector<zelsvm::SmoLowerBeta<double>> lower(grid);
  zel::launch(zelsvm::findSmoDeltaKernel<double, nu, unitDiagonal>, {grid, 32, 512}, delta.data(),
              lower.data(), upper[0].data(), index[0].data(), upper[second].data(),
              index[second].data(), state.deviceRows[0].data(), state.deviceRows[second].data(),
              state.deviceAlpha.data(), state.deviceActive.data(), activeCount);
  EXPECT_EQ(firstOf(lower).value, best);
  EXPECT_EQ(firstOf(lower).index, j);

  // The pair moves against y_i and along y_j until the slope or a bound ends it.
  const auto room = [&](unsigned t, bool rising) {
    return rising ? state.bound(t) - state.alpha[t] : state.alpha[t];
  };
  const double step =
      std::min({(expected[classOf(j)].up - state.v(j)) / curvature(j),
                room(i, state.y[i].y > 0), room(j, state.y[j].y < 0)});
  const std::vector<double> moved = fromDevice(state.deviceAlpha);
  for (unsigned t = 0; t < state.l; ++t) {
    const double change = t == i ? state.y[i].y * step : t == j ? -state.y[j].y * step : 0;
    EXPECT_NEAR(moved[t], state.alpha[t] + change, 1e-14) << t;
  }
  EXPECT_NEAR(firstOf(delta).deltaI, state.y[i].y * step, 1e-14);
  EXPECT_NEAR(firstOf(delta).deltaJ, -state.y[j].y * step, 1e-14);
}

class SmoKernels : public testing::TestWithParam<bool> {};

TEST_P(SmoKernels, FindTheFirstBestPair) {
  for (const unsigned samples : {1u, 3u, 1000u, 8192u, 8193u, 30'000u}) {
    SCOPED_TRACE(std::to_string(samples) + " samples");
    if (samples >= 1000) {
      KernelState nuUnit(samples, GetParam());
      checkSearch<true, true>(nuUnit);
      KernelState nu(samples, GetParam());
      checkSearch<true, false>(nu);
    }
    KernelState unit(samples, GetParam());
    checkSearch<false, true>(unit);
    KernelState core(samples, GetParam());
    checkSearch<false, false>(core);
  }
}

TEST_P(SmoKernels, MarkBoundVariablesBeyondTheWorkingSet) {
  for (const bool nu : {false, true}) {
    KernelState state(20'000, GetParam());
    const double up[2] = {20, 10};
    const double low[2] = {-30, 5};
    const auto mark = nu ? zelsvm::reduceSmoWorkingSetKernel<double, true>
                         : zelsvm::reduceSmoWorkingSetKernel<double, false>;
    zel::launch(mark, {4, 128}, state.deviceStatus.data(), up[0], up[1], low[0], low[1],
                state.deviceActive.data(), static_cast<unsigned>(state.active.size()));
    const std::vector<char2> marked = fromDevice(state.deviceStatus);
    std::vector<bool> expected(state.l);
    for (const unsigned t : state.active) {
      const int c = nu && state.y[t].y < 0 ? 1 : 0;
      expected[t] = (!state.canRise(t) && state.v(t) > up[c]) ||
                    (!state.canFall(t) && state.v(t) < low[c]);
    }
    for (unsigned t = 0; t < state.l; ++t) {
      EXPECT_EQ(marked[t].x, expected[t] ? 1 : 0) << t;
      EXPECT_EQ(marked[t].y, state.y[t].y) << t;
    }
  }
}

TEST(SmoGradientKernels, UpdateEveryVariable) {
  KernelState state(20'000, false);
  std::vector<zelsvm::SmoDelta<double>> step{{0.25, -0.5}};
  const DeviceVector<zelsvm::SmoDelta<double>> delta = onDevice(step);
  for (const auto& [i, j] : {std::pair{3u, 20'005u}, {39'999u, 0u}}) {
    const std::vector<double> before = fromDevice(state.deviceGradient);
    zel::launch(zelsvm::updateSmoGradientKernel<double>, {4, 128}, state.deviceGradient.data(),
                delta.data(), i, state.deviceRows[0].data(), j, state.deviceRows[1].data(),
                state.l);
    const std::vector<double> after = fromDevice(state.deviceGradient);
    for (unsigned k = 0; k < state.l; ++k) {
      const unsigned s = k % state.samples;
      const double change = state.y[k].y * (0.25 * state.y[i].y * state.rows[0][s] -
                                            0.5 * state.y[j].y * state.rows[1][s]);
      EXPECT_EQ(after[k], before[k] + change) << k;  // exact: all are eighths
    }
  }
}

TEST(SmoGradientKernels, BeginWithTheKernelColumns) {
  KernelState state(9000, false);
  const unsigned ld = 9216;
  std::vector<double> columns(2 * ld);
  for (unsigned s = 0; s < state.samples; ++s)
    for (const unsigned c : {0u, 1u}) columns[c * ld + s] = state.rows[c][s];
  const DeviceVector<double> Q = onDevice(columns);
  const unsigned first = 9007;  // variables 9007 and 9008
  zel::launch(zelsvm::initSmoGradientKernel<double>, {4, 128}, state.deviceGradient.data(),
              Q.data(), ld, first, 2u, state.l);
  const std::vector<double> after = fromDevice(state.deviceGradient);
  for (unsigned k = 0; k < state.l; ++k) {
    double sum = 0;
    for (const unsigned c : {0u, 1u})
      sum += state.y[k].y * state.y[first + c].y * state.alpha[first + c] *
             state.rows[c][k % state.samples];
    EXPECT_EQ(after[k], state.gradient[k] + sum) << k;  // exact
  }
}

INSTANTIATE_TEST_SUITE_P(WholeOrListed, SmoKernels, testing::Bool());

}  // namespace
