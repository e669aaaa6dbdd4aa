// The solvers' sweeps, in every instruction set, against plain loops.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "support/isa_tables.h"

namespace {

using zelsvm::LowerQuery;
using zelsvm::SelectedLower;
using zelsvm::SelectedUpper;
using zelsvm::SmoState;
using zelsvm::SweptVariables;
using zeltest::IsaTables;
using zeltest::runnableTables;
using zeltest::sameNumber;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double garbage = std::numeric_limits<double>::quiet_NaN();
constexpr SelectedUpper noUpper{-infinity, infinity, -1};
constexpr SelectedLower noLower{-infinity, -1};
constexpr std::uint64_t counts[] = {0, 16, 48, 256, 272, 512, 1040};

enum class Fill { mixed, noMembers, nan };

// How the variables of a solve may be laid out: in one half or two, for the core or the nu variant.
struct Layout {
  bool halves;
  bool nu;
  [[nodiscard]] int groups() const { return halves || nu ? 2 : 1; }
};
constexpr Layout layouts[] = {{false, false}, {false, true}, {true, false}, {true, true}};

// The arrays begin one element behind their memory, so that no vector load is aligned by chance;
// values are few, so that ties abound.
struct State {
  State(std::uint64_t count, Fill fill, unsigned seed) : count(count), generator(seed) {
    for (std::uint64_t k = 0; k <= count; ++k) {
      v.push_back(fill == Fill::nan || generator() % 16 == 0 ? garbage : halves(4));
      for (auto& half : states)
        half.push_back(
            static_cast<SmoState>(fill == Fill::noMembers ? generator() & 1 : generator() & 0xC1));
      for (auto& row : rows) row.push_back(halves(3));
      diagonal.push_back(1 + halves(2));
    }
  }
  // A multiple of 1/2 between -steps / 2 and steps / 2.
  double halves(int steps) {
    return static_cast<double>(generator() % static_cast<unsigned>(2 * steps + 1)) / 2 -
           steps / 2.0;
  }
  [[nodiscard]] const double* row(int c) const { return rows[c].data() + 1; }
  [[nodiscard]] SweptVariables swept(const Layout& layout) {
    return {v.data() + 1,
            {states[0].data() + 1, states[1].data() + 1},
            {layout.halves ? -0.5 : 0, layout.halves ? 0.5 : 0}};
  }

  std::uint64_t count;
  std::mt19937 generator;
  std::vector<double> v, diagonal, rows[2];
  std::vector<SmoState> states[2];
};

SelectedUpper slowUpper(const SweptVariables& x, std::uint64_t begin, std::uint64_t end,
                        const Layout& layout, int group, SelectedUpper best) {
  const int half = layout.halves ? group : 0;
  for (std::uint64_t q = begin; q < end; ++q) {
    const SmoState s = x.states[half][q];
    if (layout.nu && !layout.halves && ((s & 1) != 0) != (group == 0)) continue;
    const double v = x.v[q] + x.offset[half];
    if ((s & 0x80) != 0 && v > best.up) {
      best.up = v;
      best.position = static_cast<std::int64_t>(q);
    }
    if ((s & 0x40) != 0 && v < best.low) best.low = v;
  }
  return best;
}

SelectedLower slowLower(const SweptVariables& x, std::uint64_t end, const LowerQuery& query,
                        std::uint64_t begin, const Layout& layout, int half, bool unitDiagonal) {
  SelectedLower best = noLower;
  for (std::uint64_t q = begin; q < end; ++q) {
    const SmoState s = x.states[half][q];
    const bool negative = layout.halves ? half == 1 : (s & 1) == 0;
    const int c = layout.nu && negative ? 1 : 0;
    const double b = query.up[c] - (x.v[q] + x.offset[half]);
    if ((s & 0x40) == 0 || !(b > 0)) continue;
    const double diagonals = unitDiagonal ? 2 : query.diagonal[c] + query.diagonals[q];
    double curvature = diagonals - 2 * query.row[c][q];
    if (curvature <= 0) curvature = 1e-12;
    const double gain = b * b / curvature;
    if (gain > best.gain) best = {gain, static_cast<std::int64_t>(q)};
  }
  return best;
}

class SmoSweeps : public testing::TestWithParam<IsaTables> {
 protected:
  // The selections from begin on, continuing from what an earlier range found.
  static void expectUppers(const SweptVariables& x, std::uint64_t begin, std::uint64_t end,
                           const Layout& layout, const SelectedUpper& before,
                           const SelectedUpper* actual) {
    for (int group = 0; group < 2; ++group) {
      const SelectedUpper expected =
          group < layout.groups() ? slowUpper(x, begin, end, layout, group, before) : before;
      EXPECT_EQ(actual[group].up, expected.up);
      EXPECT_EQ(actual[group].low, expected.low);
      EXPECT_EQ(actual[group].position, expected.position);
    }
  }
};

TEST_P(SmoSweeps, SelectionsTakeTheFirstBest) {
  unsigned seed = 0;
  for (const std::uint64_t n : counts)
    for (const Fill fill : {Fill::mixed, Fill::noMembers, Fill::nan}) {
      SCOPED_TRACE(std::to_string(n) + ", fill " + std::to_string(int(fill)));
      State state(n, fill, ++seed);
      const LowerQuery query{
          {1.0, 0.5}, {state.row(0), state.row(1)}, {1.5, 2}, state.diagonal.data() + 1};
      for (const std::uint64_t begin : {std::uint64_t{0}, n / 32 * 16})
        for (const Layout& layout : layouts) {
          SCOPED_TRACE(std::to_string(layout.halves) + std::to_string(layout.nu));
          const SweptVariables x = state.swept(layout);
          for (const SelectedUpper& before : {noUpper, SelectedUpper{2, -2, 7}}) {
            SelectedUpper best[2] = {before, before};
            GetParam().smo->selectUpper[layout.halves][layout.nu](x, begin, n, best);
            expectUppers(x, begin, n, layout, before, best);
          }
          for (const bool unit : {false, true}) {
            SelectedLower actual[2] = {noLower, noLower};
            GetParam().smo->selectLower[layout.halves][layout.nu][unit](x, query, begin, n, actual);
            // What the first half's best beats is of no use.
            double most = -infinity;
            for (int half = 0; half < (layout.halves ? 2 : 1); ++half) {
              const SelectedLower expected = slowLower(x, n, query, begin, layout, half, unit);
              if (!(expected.gain > most)) continue;
              most = expected.gain;
              EXPECT_EQ(actual[half].gain, expected.gain);
              EXPECT_EQ(actual[half].position, expected.position);
            }
          }
        }
    }
}

TEST_P(SmoSweeps, UpdatesStayInTheirRange) {
  const auto fma = GetParam().fma;
  for (const std::uint64_t n : counts)
    for (const Layout& layout : layouts) {
      SCOPED_TRACE(n);
      const std::uint64_t begin = n / 64 * 16;
      State state(n, Fill::mixed, static_cast<unsigned>(n));
      const double weights[] = {0.1, -0.7};
      const std::vector<double> before = state.v;
      SelectedUpper best[2] = {noUpper, noUpper};
      const SweptVariables x = state.swept(layout);
      GetParam().smo->updateAndSelect[layout.halves][layout.nu](
          x, {state.row(0), state.row(1), weights[0], weights[1]}, begin, n, best);
      expectUppers(x, begin, n, layout, noUpper, best);
      for (std::uint64_t k = 0; k < n; ++k) {
        const double v = before[k + 1];
        const double first = state.row(0)[k];
        const double second = state.row(1)[k];
        const double step = fma(weights[0], first, second * weights[1]);
        EXPECT_TRUE(sameNumber(state.v[k + 1], k < begin ? v : v - step)) << k;
      }
      EXPECT_TRUE(sameNumber(state.v[0], before[0]));
    }
}

INSTANTIATE_TEST_SUITE_P(Isa, SmoSweeps, testing::ValuesIn(runnableTables()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
