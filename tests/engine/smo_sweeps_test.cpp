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
using zeltest::IsaTables;
using zeltest::runnableTables;
using zeltest::sameNumber;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double garbage = std::numeric_limits<double>::quiet_NaN();
constexpr SelectedUpper noUpper{-infinity, infinity, -1};
constexpr SelectedLower noLower{-infinity, -1};
constexpr std::uint64_t counts[] = {0, 16, 48, 256, 272, 512, 1040};

enum class Fill { mixed, noMembers, nan };

// The arrays begin one element behind their memory, so that no vector load is aligned by chance;
// values are few, so that ties abound.
struct State {
  State(std::uint64_t count, Fill fill, unsigned seed) : count(count), generator(seed) {
    for (std::uint64_t k = 0; k <= count; ++k) {
      v.push_back(fill == Fill::nan || generator() % 16 == 0 ? garbage : halves(4));
      states.push_back(
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

  std::uint64_t count;
  std::mt19937 generator;
  std::vector<double> v, diagonal, rows[2];
  std::vector<SmoState> states;
};

// classes: bit 0 takes the positive variables, bit 1 the others.
SelectedUpper slowUpper(const double* v, const SmoState* states, std::uint64_t begin,
                        std::uint64_t end, int classes, SelectedUpper best) {
  for (std::uint64_t q = begin; q < end; ++q) {
    if ((classes & ((states[q] & 1) != 0 ? 1 : 2)) == 0) continue;
    if ((states[q] & 0x80) != 0 && v[q] > best.up) {
      best.up = v[q];
      best.position = static_cast<std::int64_t>(q);
    }
    if ((states[q] & 0x40) != 0 && v[q] < best.low) best.low = v[q];
  }
  return best;
}

SelectedLower slowLower(const State& state, const LowerQuery& query, std::uint64_t begin, bool nu,
                        bool unitDiagonal) {
  SelectedLower best = noLower;
  for (std::uint64_t q = begin; q < state.count; ++q) {
    const SmoState s = state.states[q + 1];
    const int c = nu && (s & 1) == 0 ? 1 : 0;
    const double b = query.up[c] - state.v[q + 1];
    if ((s & 0x40) == 0 || !(b > 0)) continue;
    const double diagonals = unitDiagonal ? 2 : query.diagonal[c] + query.diagonals[q];
    double curvature = diagonals - 2 * query.row[c][q];
    if (curvature <= 0) curvature = 1e-12;
    const double gain = b * b / curvature;
    if (gain > best.gain) best = {gain, static_cast<std::int64_t>(q)};
  }
  return best;
}

void expectSame(const SelectedUpper& actual, const SelectedUpper& expected) {
  EXPECT_EQ(actual.up, expected.up);
  EXPECT_EQ(actual.low, expected.low);
  EXPECT_EQ(actual.position, expected.position);
}

class SmoSweeps : public testing::TestWithParam<IsaTables> {
 protected:
  // The selections from begin on, continuing from what an earlier range found.
  static void expectUppers(const double* v, const State& state, std::uint64_t begin, bool nu,
                           const SelectedUpper& before, const SelectedUpper* actual) {
    for (int c = 0; c < (nu ? 2 : 1); ++c)
      expectSame(actual[c], slowUpper(v, state.states.data() + 1, begin, state.count,
                                      nu ? 1 << c : 3, before));
    if (!nu) expectSame(actual[1], before);
  }
};

TEST_P(SmoSweeps, SelectionsTakeTheFirstBest) {
  unsigned seed = 0;
  for (const std::uint64_t n : counts)
    for (const Fill fill : {Fill::mixed, Fill::noMembers, Fill::nan}) {
      SCOPED_TRACE(std::to_string(n) + ", fill " + std::to_string(int(fill)));
      const State state(n, fill, ++seed);
      const double* const v = state.v.data() + 1;
      const SmoState* const states = state.states.data() + 1;
      const LowerQuery query{
          {1.0, 0.5}, {state.row(0), state.row(1)}, {1.5, 2}, state.diagonal.data() + 1};
      for (const std::uint64_t begin : {std::uint64_t{0}, n / 32 * 16})
        for (const bool nu : {false, true}) {
          for (const SelectedUpper& before : {noUpper, SelectedUpper{2, -2, 7}}) {
            SelectedUpper best[2] = {before, before};
            GetParam().smo->selectUpper[nu](v, states, begin, n, best);
            expectUppers(v, state, begin, nu, before, best);
          }
          for (const bool unit : {false, true}) {
            SelectedLower actual = noLower;
            GetParam().smo->selectLower[nu][unit](v, states, query, begin, n, &actual);
            const SelectedLower expected = slowLower(state, query, begin, nu, unit);
            EXPECT_EQ(actual.gain, expected.gain) << nu << unit;
            EXPECT_EQ(actual.position, expected.position) << nu << unit;
          }
        }
    }
}

TEST_P(SmoSweeps, UpdatesStayInTheirRange) {
  const auto fma = GetParam().fma;
  for (const std::uint64_t n : counts)
    for (const bool nu : {false, true}) {
      SCOPED_TRACE(n);
      const std::uint64_t begin = n / 64 * 16;
      const State state(n, Fill::mixed, static_cast<unsigned>(n));
      const double weights[] = {0.1, -0.7};
      std::vector<double> columns(state.rows[0]);  // the rows as columns, off alignment
      columns.insert(columns.end(), state.rows[1].begin(), state.rows[1].end());
      std::vector<double> updated = state.v;
      SelectedUpper best[2] = {noUpper, noUpper};
      GetParam().smo->updateAndSelect[nu](updated.data() + 1, state.states.data() + 1,
                                          {state.row(0), state.row(1), weights[0], weights[1]},
                                          begin, n, best);
      expectUppers(updated.data() + 1, state, begin, nu, noUpper, best);
      std::vector<double> added = state.v;
      GetParam().smo->addColumns(added.data() + 1, columns.data() + 1, n + 1, weights, 2, begin, n);
      for (std::uint64_t k = 0; k < n; ++k) {
        const double v = state.v[k + 1];
        const double first = state.row(0)[k];
        const double second = state.row(1)[k];
        const double step = fma(weights[0], first, second * weights[1]);
        const double sum = fma(second, weights[1], fma(first, weights[0], 0));
        EXPECT_TRUE(sameNumber(updated[k + 1], k < begin ? v : v - step)) << k;
        EXPECT_TRUE(sameNumber(added[k + 1], k < begin ? v : v - sum)) << k;
      }
      EXPECT_TRUE(sameNumber(updated[0], state.v[0]) && sameNumber(added[0], state.v[0]));
    }
}

template <typename Element>
void expectRowProducts(const IsaTables& tables, zelsvm::PanelProducts<Element> rowProducts,
                       std::uint64_t length, std::uint64_t panels) {
  std::mt19937 generator(static_cast<unsigned>(length));
  std::uniform_real_distribution<double> uniform(-1000, 1000);
  constexpr unsigned most = 17;
  std::vector<Element> samples(16 * panels * length);
  for (Element& element : samples) element = static_cast<Element>(uniform(generator));
  std::vector<double> rows(most * length);
  for (double& value : rows) value = uniform(generator);
  for (unsigned count = 1; count <= most; ++count) {
    std::vector<double> products(most * 16 * panels, garbage);
    std::vector<const double*> from;
    std::vector<double*> to;
    for (unsigned c = 0; c < count; ++c) {
      from.push_back(rows.data() + c * length);
      to.push_back(products.data() + c * 16 * panels);
    }
    rowProducts(samples.data(), panels, length, from.data(), to.data(), count, 0.7);
    for (unsigned c = 0; c < count; ++c)
      for (std::uint64_t s = 0; s < 16 * panels; ++s) {
        double sum = 0;
        for (std::uint64_t j = 0; j < length; ++j)
          sum = tables.fma(from[c][j], samples[(s / 16 * length + j) * 16 + s % 16], sum);
        ASSERT_TRUE(sameNumber(to[c][s], sum * 0.7)) << length << ", row " << c << " of " << count;
      }
  }
}

// Whatever rows are computed together, on either side of every width of a pass.
TEST_P(SmoSweeps, RowProductsAreSummedFromFirstToLast) {
  for (const std::uint64_t length : {0, 1, 9, 128, 300})
    for (const std::uint64_t panels : {1, 2, 3}) {
      expectRowProducts(GetParam(), GetParam().rowProducts->numbers, length, panels);
      expectRowProducts(GetParam(), GetParam().rowProducts->wholeNumbers, length, panels);
    }
}

INSTANTIATE_TEST_SUITE_P(Isa, SmoSweeps, testing::ValuesIn(runnableTables()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
