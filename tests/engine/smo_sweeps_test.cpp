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
using zelsvm::SmoView;
using zeltest::IsaTables;
using zeltest::runnableTables;
using zeltest::sameNumber;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double garbage = std::numeric_limits<double>::quiet_NaN();
constexpr double Cp = 1;
constexpr double Cn = 2;
constexpr std::uint64_t counts[] = {0, 1, 2, 3, 7, 8, 9, 63, 64, 65, 1000};

enum class Fill { mixed, zeros, bounds, nan };

// A solver's state. The arrays begin one element behind their memory, so that no vector load is
// aligned by chance; gradients take few values, so that ties abound.
class State {
 public:
  State(std::uint64_t variables, std::uint64_t samples, Fill fill, unsigned seed)
      : variables(variables), samples(samples), generator(seed) {
    for (std::uint64_t k = 0; k <= variables; ++k) {
      const bool positive = generator() % 2 == 0;
      status.push_back({static_cast<signed char>(generator() % 3 - 1),
                        static_cast<signed char>(positive ? 1 : -1)});
      const double bound = positive ? Cp : Cn;
      gradient.push_back(fill == Fill::nan || generator() % 16 == 0 ? garbage : halves(4));
      alpha.push_back(fill == Fill::zeros    ? 0
                      : fill == Fill::bounds ? bound
                                             : bound * static_cast<double>(generator() % 3) / 2);
    }
    for (std::uint64_t k = 0; k <= samples; ++k) {
      rows[0].push_back(halves(3));
      rows[1].push_back(halves(3));
      diagonal.push_back(1 + halves(2));
    }
  }

  // Half of the variables, as shrinking leaves them.
  void list() {
    active.push_back(0);  // skipped like the other arrays' first element
    for (unsigned k = 0; k < variables; ++k)
      if (generator() % 2 == 0) active.push_back(k);
  }

  [[nodiscard]] SmoView view() const {
    return {gradient.data() + 1,
            alpha.data() + 1,
            status.data() + 1,
            diagonal.data() + 1,
            active.empty() ? nullptr : active.data() + 1,
            Cp,
            Cn,
            samples};
  }
  [[nodiscard]] const double* row(int c) const { return rows[c].data() + 1; }
  [[nodiscard]] std::uint64_t positions() const {
    return active.empty() ? variables : active.size() - 1;
  }
  // A multiple of 1/2 between -steps / 2 and steps / 2.
  double halves(int steps) {
    return static_cast<double>(generator() % static_cast<unsigned>(2 * steps + 1)) / 2 -
           steps / 2.0;
  }

  std::uint64_t variables;
  std::uint64_t samples;
  std::mt19937 generator;
  std::vector<double> gradient, alpha, diagonal, rows[2];
  std::vector<char2> status;
  std::vector<unsigned> active;
};

// One variable as the slow loops see it.
struct Variable {
  Variable(const SmoView& view, std::uint64_t q) : t(view.active == nullptr ? q : view.active[q]) {
    positive = view.status[t].y > 0;
    sample = t < view.samples ? t : t - view.samples;
    v = positive ? -view.gradient[t] : view.gradient[t];
    const bool canRise = view.alpha[t] < (positive ? view.Cp : view.Cn);
    const bool canFall = view.alpha[t] > 0;
    inUpper = positive ? canRise : canFall;
    inLower = positive ? canFall : canRise;
  }
  std::uint64_t t;
  std::uint64_t sample;
  bool positive;
  double v;
  bool inUpper;
  bool inLower;
};

// classes: bit 0 takes the positive variables, bit 1 the others.
SelectedUpper slowUpper(const SmoView& view, std::uint64_t begin, std::uint64_t end, int classes) {
  SelectedUpper best{-infinity, infinity, -1};
  for (std::uint64_t q = begin; q < end; ++q) {
    const Variable x(view, q);
    if ((classes & (x.positive ? 1 : 2)) == 0) continue;
    if (x.inUpper && x.v > best.up) {
      best.up = x.v;
      best.position = static_cast<std::int64_t>(q);
    }
    if (x.inLower && x.v < best.low) best.low = x.v;
  }
  return best;
}

SelectedLower slowLower(const SmoView& view, const LowerQuery& query, std::uint64_t begin,
                        std::uint64_t end, bool nu, bool unitDiagonal) {
  SelectedLower best{infinity, -1};
  for (std::uint64_t q = begin; q < end; ++q) {
    const Variable x(view, q);
    const int c = nu && !x.positive ? 1 : 0;
    const double b = query.up[c] - x.v;
    if (!x.inLower || !(b > 0)) continue;
    const double diagonals = unitDiagonal ? 2 : query.diagonal[c] + view.diagonal[x.sample];
    double curvature = diagonals - 2 * query.row[c][x.sample];
    if (curvature <= 0) curvature = 1e-12;
    const double change = -(b * b) / curvature;
    if (change < best.value) best = {change, static_cast<std::int64_t>(q)};
  }
  return best;
}

void expectSame(const SelectedUpper& actual, const SelectedUpper& expected) {
  EXPECT_EQ(actual.up, expected.up);
  EXPECT_EQ(actual.low, expected.low);
  EXPECT_EQ(actual.position, expected.position);
}

void checkSelections(const IsaTables& tables, State& state) {
  const SmoView view = state.view();
  const std::uint64_t n = state.positions();
  const LowerQuery query{{1.0, 0.5}, {state.row(0), state.row(1)}, {1.5, 2}};
  for (const std::uint64_t begin : {std::uint64_t{0}, std::uint64_t{1}, n / 2, n / 2 + 1}) {
    if (begin > n) continue;
    SCOPED_TRACE("from " + std::to_string(begin));
    constexpr SelectedUpper guard{-77, 77, 777};
    SelectedUpper core[2] = {guard, guard};
    tables.smo->selectUpper(view, begin, n, core);
    expectSame(core[0], slowUpper(view, begin, n, 3));
    expectSame(core[1], guard);
    SelectedUpper nu[3] = {guard, guard, guard};
    tables.smo->selectUpperNu(view, begin, n, nu);
    expectSame(nu[0], slowUpper(view, begin, n, 1));
    expectSame(nu[1], slowUpper(view, begin, n, 2));
    expectSame(nu[2], guard);
    for (const bool isNu : {false, true})
      for (const bool unit : {false, true}) {
        const SelectedLower actual = tables.smo->selectLower[isNu][unit](view, query, begin, n);
        const SelectedLower expected = slowLower(view, query, begin, n, isNu, unit);
        EXPECT_EQ(actual.value, expected.value) << isNu << unit;
        EXPECT_EQ(actual.position, expected.position) << isNu << unit;
      }
  }
}

class SmoSweeps : public testing::TestWithParam<IsaTables> {};

TEST_P(SmoSweeps, SelectionsTakeTheFirstBest) {
  unsigned seed = 0;
  for (const std::uint64_t n : counts)
    for (const std::uint64_t halves : {1, 2})  // regression: two variables per kernel row entry
      for (const bool listed : {false, true})
        for (const Fill fill : {Fill::mixed, Fill::zeros, Fill::bounds, Fill::nan}) {
          SCOPED_TRACE(std::to_string(halves) + " x " + std::to_string(n) + ", listed " +
                       std::to_string(listed) + ", fill " + std::to_string(int(fill)));
          State state(halves * n, n, fill, ++seed);
          if (listed) state.list();
          checkSelections(GetParam(), state);
        }
}

TEST_P(SmoSweeps, GradientUpdatesStayInTheirRange) {
  for (const std::uint64_t n : {0, 1, 7, 8, 65, 511, 512, 513, 1300})
    for (const std::uint64_t halves : {1, 2}) {
      SCOPED_TRACE(std::to_string(halves) + " x " + std::to_string(n));
      const std::uint64_t l = halves * n;
      const std::uint64_t begin = l / 7;
      const std::uint64_t end = l - l / 9;
      State state(l, n, Fill::mixed, static_cast<unsigned>(n));
      const SmoView view = state.view();
      const double weights[] = {0.1, -0.7, 1 / 3.0};
      std::vector<double> columns(state.rows[0]);  // the rows as columns, off alignment
      columns.insert(columns.end(), state.rows[1].begin(), state.rows[1].end());
      columns.insert(columns.end(), state.diagonal.begin(), state.diagonal.end());

      std::vector<double> updated = state.gradient;
      GetParam().smo->updateGradient(updated.data() + 1, view.status, n,
                                     {state.row(0), state.row(1), weights[0], weights[1]}, begin,
                                     end);
      std::vector<double> added = state.gradient;
      GetParam().smo->addColumns(added.data() + 1, view.status, n, columns.data() + 1, n + 1,
                                 weights, 3, begin, end);
      EXPECT_TRUE(sameNumber(updated[0], state.gradient[0]));
      EXPECT_TRUE(sameNumber(added[0], state.gradient[0]));
      for (std::uint64_t k = 0; k < l; ++k) {
        const auto fma = GetParam().fma;
        const double y = begin <= k && k < end ? view.status[k].y : 0;
        const double first = state.row(0)[k % n];
        const double second = state.row(1)[k % n];
        double sum = 0;
        for (const auto& [weight, value] : {std::pair{weights[0], first},
                                            {weights[1], second},
                                            {weights[2], view.diagonal[k % n]}})
          sum = fma(value, weight, sum);
        const double step = fma(weights[0], first, second * weights[1]);
        EXPECT_TRUE(sameNumber(updated[k + 1], view.gradient[k] + y * step)) << k;
        EXPECT_TRUE(sameNumber(added[k + 1], view.gradient[k] + y * sum)) << k;
      }
    }
}

INSTANTIATE_TEST_SUITE_P(Isa, SmoSweeps, testing::ValuesIn(runnableTables()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
