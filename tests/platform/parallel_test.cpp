// Threads change how long things take, never what comes out.
#include "platform/host/parallel.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

#include "platform/device_array.h"
#include "platform/host/blas.h"
#include "platform/host/csr_kernels.h"
#include "platform/host/csr_product.h"
#include "platform/host/dense_product.h"
#include "platform/host/join_governor.h"

namespace {

// Big enough for every loop to be handed to threads.
constexpr double longWork = 1e6;

class Threads : public testing::Test {
 protected:
  ~Threads() override { omp_set_num_threads(before); }
  const int before = omp_get_max_threads();
};

TEST_F(Threads, VisitEveryChunkOnceAndWhole) {
  for (const int threads : {1, 2})
    for (const std::uint64_t count : {0, 1, 99, 100, 101, 1000}) {
      omp_set_num_threads(threads);
      std::vector<std::atomic<int>> visits(count);
      zel::forEachChunk(count, 100, longWork, [&](std::uint64_t begin, std::uint64_t end) {
        EXPECT_EQ(begin % 100, 0U);
        EXPECT_EQ(end, std::min(begin + 100, count));
        for (std::uint64_t i = begin; i < end; ++i) ++visits[i];
      });
      for (const auto& visit : visits) EXPECT_EQ(visit, 1);
    }
}

TEST_F(Threads, NestedLoopsRunOnTheThreadThatMeetsThem) {
  omp_set_num_threads(2);
  std::atomic<int> inner = 0;
  std::atomic<int> strangers = 0;
  zel::forEachChunk(4, 1, longWork, [&](std::uint64_t, std::uint64_t) {
    const int outerThread = omp_get_thread_num();
    zel::forEachChunk(8, 1, longWork, [&](std::uint64_t, std::uint64_t) {
      ++inner;
      if (omp_get_thread_num() != outerThread) ++strangers;
    });
  });
  EXPECT_EQ(inner, 32);
  EXPECT_EQ(strangers, 0);
}

TEST_F(Threads, OfACrewRunTheirLoopsAlone) {
  omp_set_num_threads(2);
  for (const int members : {1, 2, 3}) {
    std::vector<std::atomic<int>> called(3);
    std::atomic<int> strangers = 0;
    const auto caller = std::this_thread::get_id();
    zel::runCrew(members, [&](int member) {
      ++called[static_cast<std::size_t>(member)];
      const auto self = std::this_thread::get_id();
      if ((self == caller) != (member == 0)) ++strangers;
      zel::forEachChunk(8, 1, longWork, [&](std::uint64_t, std::uint64_t) {
        if (std::this_thread::get_id() != self) ++strangers;
      });
    });
    for (int member = 0; member < 3; ++member)
      EXPECT_EQ(called[static_cast<std::size_t>(member)],
                member < std::min(members, zel::threadCount()) ? 1 : 0);
    EXPECT_EQ(strangers, 0);
  }
}

TEST_F(Threads, ShortWorkAndASingleThreadStayWithTheCaller) {
  std::atomic<int> elsewhere = 0;
  const auto body = [&](std::uint64_t, std::uint64_t) { elsewhere += omp_in_parallel(); };
  omp_set_num_threads(2);
  zel::forEachChunk(10, 1, 1.0, body);
  omp_set_num_threads(1);
  zel::forEachChunk(10, 1, longWork, body);
  EXPECT_EQ(zel::threadCount(), 1);
  EXPECT_EQ(elsewhere, 0);
}

TEST_F(Threads, GiveEqualBits) {
  constexpr int m = 3001;
  constexpr int n = 21;
  constexpr int k = 203;
  const auto A = randomValues(m * k, 1);
  const auto B = randomValues(n * k, 2);
  std::vector<int> offsets(m + 1);
  std::vector<int> indices;
  for (int i = 0; i < m; ++i) {
    for (int j = i % 5; j < k; j += 3) indices.push_back(j);
    offsets[static_cast<std::size_t>(i) + 1] = static_cast<int>(indices.size());
  }
  const auto sparse = zel::CsrMatrix::inspect(
      {m, k, static_cast<std::int64_t>(indices.size()), offsets.data(), indices.data(), A.data()});
  ASSERT_TRUE(sparse);
  ASSERT_EQ(sparse->dense(), nullptr);
  ASSERT_TRUE(zel::prepareBlas());
  const auto products = [&](int threads) {
    omp_set_num_threads(threads);
    std::vector<double> C(m * (2 * n + 2));
    double* const vectors = C.data() + 2 * m * n;
    std::vector<double> buffer(zel::csrProductBuffer(*sparse, n) / sizeof(double));
    zel::denseProduct({true, false, m, n, k, 1, A.data(), k, B.data(), k, 0, C.data(), m});
    zel::csrProduct(*sparse, 1, {B.data(), k, n}, 0, {C.data() + m * n, m, n}, buffer.data());
    zel::denseProduct({true, false, m, 1, k, 1, A.data(), k, B.data(), k, 0, vectors, m});
    zel::csrProduct(*sparse, 1, {B.data(), k, 1}, 0, {vectors + m, m, 1}, nullptr);
    EXPECT_EQ(omp_get_max_threads(), threads);  // the BLAS has not changed it
    return C;
  };
  EXPECT_EQ(products(1), products(2));
}

TEST(InstructionSets, AgreeToAFewUlp) {
  const int rows = 200;
  std::vector<int> offsets{0};
  std::vector<int> indices;
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < i % 23; ++j) indices.push_back((i * 7 + j * 13) % 50);
    offsets.push_back(static_cast<int>(indices.size()));
  }
  const auto values = randomValues(indices.size(), 1);
  const auto panel = randomValues(50 * zel::panelColumns, 2);
  const zel::CsrRows all{offsets.data(), indices.data(), values.data(), 0, rows};
  for (int set = 0; set <= static_cast<int>(zel::processorIsa()); ++set) {
    const zel::CsrKernels kernels = zel::csrKernels(static_cast<zel::Isa>(set));
    std::vector<double> C(rows * 5, garbage);
    std::vector<double> y(rows, garbage);
    kernels.timesPanel(all, 2, panel.data(), 5, 0, C.data(), rows);
    kernels.timesVector(all, 2, panel.data(), 0, y.data());
    for (std::size_t i = 0; i < rows; ++i) {
      double sums[6] = {};
      double sizes[6] = {};
      for (auto p = static_cast<std::size_t>(offsets[i]);
           p < static_cast<std::size_t>(offsets[i + 1]); ++p)
        for (std::size_t c = 0; c < 6; ++c) {
          const auto j = static_cast<std::size_t>(indices[p]);
          const double term = values[p] * panel[c < 5 ? j * zel::panelColumns + c : j];
          sums[c] += 2 * term;
          sizes[c] += 2 * std::abs(term);
        }
      for (std::size_t c = 0; c < 6; ++c) {
        const double result = c < 5 ? C[i + c * rows] : y[i];
        ASSERT_NEAR(result, sums[c], 1e-15 * sizes[c]) << "set " << set << ", row " << i;
      }
    }
  }
}

constexpr std::int64_t microsecond = 1000;
constexpr std::int64_t millisecond = 1000 * microsecond;

// Reports one team after the other, each as long as it took, until it is paused; returns the pause.
std::int64_t pauseAfter(zel::JoinGovernor& governor, std::int64_t& now, std::int64_t elapsed,
                        std::int64_t alone) {
  for (int teams = 0; governor.allows(now); ++teams) {
    if (teams == 1000) return 0;
    now += elapsed;
    governor.report(now, elapsed, alone);
  }
  const std::int64_t start = now;
  while (!governor.allows(now)) now += millisecond;
  return now - start;
}

TEST(Governor, LetsTeamsWorkThatSaveTimeAndForgivesAHiccup) {
  zel::JoinGovernor governor;
  std::int64_t now = 0;
  EXPECT_EQ(pauseAfter(governor, now, 110 * microsecond, 200 * microsecond), 0);
  governor.report(now, 4 * millisecond, 200 * microsecond);
  EXPECT_TRUE(governor.allows(now));
}

TEST(Governor, PausesLongerEachTimeThatTeamsLoseAndShortlyAfterTheyPaid) {
  zel::JoinGovernor governor;
  std::int64_t now = 0;
  const auto losing = [&] {
    return pauseAfter(governor, now, 9 * millisecond, 200 * microsecond) / millisecond;
  };
  for (const std::int64_t expected : {50, 100, 200, 400, 800, 1000, 1000})
    EXPECT_EQ(losing(), expected);
  EXPECT_EQ(pauseAfter(governor, now, 110 * microsecond, 200 * microsecond), 0);
  EXPECT_EQ(losing(), 50);
}

}  // namespace
