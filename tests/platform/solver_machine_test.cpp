// What the machine does for a solver, where the solvers' own tests do not tell.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "data/matrix.h"
#include "support/tested_machine.h"

namespace {

class ShrinkMarks : public testing::TestWithParam<bool> {};

// Samples whose kernel values are 0, so that the gradient is the linear term.
TEST_P(ShrinkMarks, FallOnBoundVariablesBeyondTheirGroup) {
  const bool nu = GetParam();
  constexpr unsigned count = 5000;
  constexpr double Cp = 1;
  constexpr double Cn = 2;
  const double up[2] = {20, 10};  // of positive and negative variables; core: the first for all
  const double low[2] = {-30, 5};
  std::mt19937 generator(1);
  std::vector<double> alpha, gradient;
  std::vector<signed char> signs;
  std::vector<unsigned> active;
  std::vector<signed char> expected(count);
  for (unsigned t = 0; t < count; ++t) {
    const bool positive = generator() % 2 == 0;
    const double c = positive ? Cp : Cn;
    const double v = static_cast<double>(generator() % 100) - 50;
    signs.push_back(static_cast<signed char>(positive ? 1 : -1));
    alpha.push_back(static_cast<double>(generator() % 3) / 2 * c);
    gradient.push_back(positive ? -v : v);
    if (generator() % 3 == 0) continue;
    active.push_back(t);
    const int group = nu && !positive ? 1 : 0;
    const bool mayGrow = positive ? alpha[t] < c : alpha[t] > 0;
    const bool mayShrink = positive ? alpha[t] > 0 : alpha[t] < c;
    expected[t] = (!mayGrow && v > up[group]) || (!mayShrink && v < low[group]);
  }
  std::vector<double> zeros(count);
  const auto samples = zelmag::createMatrix<double>(zeros.data(), nullptr, nullptr, 1, count);
  const auto machine = zeltest::testedMachine().makeSolver(zelsvm::SVM_KERNEL_LINEAR, nu);
  machine->begin({.samples = samples.get(),
                  .kernel = {zelsvm::SVM_KERNEL_LINEAR, 1, 0, 3},
                  .signs = signs,
                  .start = alpha,
                  .linearTerm = gradient,
                  .Cp = Cp,
                  .Cn = Cn,
                  .cacheMegabytes = 1},
                 [] {});
  machine->activate(active);
  std::vector<signed char> marks(count);
  machine->markShrinkable({0, {up[0], low[0]}}, {0, {up[1], low[1]}}, marks);
  EXPECT_EQ(marks, expected);
  machine->end();
}

INSTANTIATE_TEST_SUITE_P(CoreAndNu, ShrinkMarks, testing::Bool());

}  // namespace
