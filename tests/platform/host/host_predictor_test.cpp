// Decision values of a sample: the same bits alone and among others, in either form.
#include <gtest/gtest.h>

#include "support/models.h"
#include "support/quiet.h"

namespace {

using zeltest::Samples;
using Values = std::vector<double>;

Samples randomRows(std::uint64_t rows, std::uint64_t cols, unsigned seed) {
  Samples samples = zeltest::classSamples(rows, cols, {0}, seed);
  for (std::size_t i = 0; i < samples.values.size(); i += 5) samples.values[i] = 0;
  return samples;
}

Values decide(int kernel, bool sparse, const Samples& tests) {
  zelsvm::SvmParameters parameters;
  parameters.kernelType = kernel;
  parameters.sparse = sparse;
  parameters.gamma = 0.3;
  zeltest::MadeModel made(parameters, randomRows(310, tests.cols, 1), {1, 2, 3}, {70, 200, 40}, 2);
  return zeltest::decisionValues(made.context, made.model, tests);
}

// More samples than a block takes.
TEST(HostPredictor, DecidesASampleAloneAsAmongOthers) {
  const zeltest::Quiet quiet;
  const std::uint64_t count = 2100;
  const Samples tests = randomRows(count, 11, 3);
  for (const int kernel : zeltest::allKernels) {
    const Values together = decide(kernel, false, tests);
    ASSERT_EQ(together.size(), 3 * count);
    EXPECT_EQ(decide(kernel, true, tests), together) << kernel;
    for (const std::uint64_t i : {std::uint64_t{0}, std::uint64_t{57}, count - 1}) {
      const Samples one{tests.cols, {tests.row(i), tests.row(i) + tests.cols}, {0}};
      EXPECT_EQ(decide(kernel, false, one),
                (Values{together[i], together[count + i], together[2 * count + i]}))
          << kernel << " sample " << i;
    }
  }
}

}  // namespace
