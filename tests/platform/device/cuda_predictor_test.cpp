// Decision values on a device beside plain sums.
#include <gtest/gtest.h>

#include <vector>

#include "platform/cuda/machine/cuda_machine.h"
#include "platform/device/reference_kernel.h"
#include "rules/pair_order.h"

namespace {

using zelsvm::CudaMachine;
using zeltest::SampleMatrix;

struct Case {
  std::size_t vectors;
  std::size_t tests;
  std::size_t classes;  // 0 for a regression
  int kernel = zelsvm::SVM_KERNEL_RADIAL;
  bool sparseVectors = false;
  bool sparseTests = false;
  std::size_t extraColumns = 0;  // of the tests
};

class Model {
 public:
  Model(const Case& c, unsigned seed)
      : c(c),
        vectors(zeltest::sampleRows(c.vectors, 6, true, seed)),
        tests(zeltest::sampleRows(c.tests, 6 + c.extraColumns, true, seed + 1)),
        vectorMatrix(vectors, c.sparseVectors),
        testMatrix(tests, c.sparseTests) {
    std::mt19937 generator(seed + 2);
    std::uniform_real_distribution<double> uniform(-1, 1);
    if (c.classes == 0) {
      starts = {0, c.vectors, c.vectors};
    } else {
      for (std::size_t k = 0; k <= c.classes; ++k) starts.push_back(c.vectors * k / c.classes);
    }
    for (std::size_t f = 0; f < functions(); ++f) rho.push_back(uniform(generator));
    coefficients.resize(c.vectors * (classes() - 1));
    for (double& value : coefficients) value = uniform(generator);
  }

  [[nodiscard]] zelsvm::DecisionTask task() const {
    return {&vectorMatrix.get(), zeltest::kernelSettings(c.kernel), starts, coefficients, rho};
  }
  [[nodiscard]] const zelmag::AbstractMatrix<double>& test() const { return testMatrix.get(); }
  [[nodiscard]] std::size_t functions() const { return classes() * (classes() - 1) / 2; }

  [[nodiscard]] double decision(std::size_t a, std::size_t b, std::size_t sample) const {
    double sum = 0;
    for (const auto& [cls, other] : {std::pair(a, b - 1), std::pair(b, a)})
      for (std::size_t v = starts[cls]; v < starts[cls + 1]; ++v)
        sum +=
            coefficients[v * (classes() - 1) + other] *
            zeltest::referenceKernel(zeltest::kernelSettings(c.kernel), vectors[v], tests[sample]);
    return sum - rho[zelsvm::pairIndex(a, b, classes())];
  }

  void check(const std::vector<double>& values, std::size_t first, std::size_t count) const {
    for (std::size_t a = 0; a < classes(); ++a)
      for (std::size_t b = a + 1; b < classes(); ++b)
        for (std::size_t k = 0; k < count; ++k) {
          const std::size_t f = zelsvm::pairIndex(a, b, classes());
          ASSERT_NEAR(values[f * count + k], decision(a, b, first + k), 1e-11)
              << c.vectors << " vectors, kernel " << c.kernel << ", pair " << a << " " << b
              << ", sample " << first + k << " of " << c.tests;
        }
  }

 private:
  [[nodiscard]] std::size_t classes() const { return starts.size() - 1; }

  Case c;
  zeltest::Rows vectors;
  zeltest::Rows tests;
  SampleMatrix vectorMatrix;
  SampleMatrix testMatrix;
  std::vector<std::uint64_t> starts;
  std::vector<double> coefficients;
  std::vector<double> rho;
};

TEST(CudaPredictor, AgreesWithPlainSums) {
  const CudaMachine machine(0);
  std::vector<Case> cases;
  for (int kernel = 0; kernel < 4; ++kernel)
    for (const bool sparseVectors : {false, true})
      for (const bool sparseTests : {false, true})
        cases.push_back({40, 7, 3, kernel, sparseVectors, sparseTests, 2});
  for (const std::size_t vectors : {1, 2, 127, 128, 129, 300, 513})
    cases.push_back({vectors, 5, 2});
  cases.push_back({60, 3, 0});
  cases.push_back({60, 3, 7});
  for (const Case& c : cases) {
    const Model model(c, 4);
    const auto predictor = machine.makePredictor(model.task());
    std::vector<double> values(model.functions() * c.tests);
    predictor->decide(model.test(), 0, c.tests, values.data());
    model.check(values, 0, c.tests);
  }
}

TEST(CudaPredictor, BlocksGiveTheSameBits) {
  const CudaMachine machine(0);
  const Model model({.vectors = 150, .tests = 37, .classes = 3, .sparseTests = true}, 6);
  const auto predictor = machine.makePredictor(model.task());
  const std::uint64_t size = predictor->blockSize(model.test());
  EXPECT_GE(size, 4U);
  EXPECT_LE(size, 256U);
  std::vector<double> whole(3 * 37);
  predictor->decide(model.test(), 0, 37, whole.data());
  for (const std::uint64_t width : {1, 16}) {
    for (std::uint64_t first = 0; first < 37; first += width) {
      const std::uint64_t count = std::min<std::uint64_t>(width, 37 - first);
      std::vector<double> part(3 * count);
      predictor->decide(model.test(), first, count, part.data());
      for (std::uint64_t f = 0; f < 3; ++f)
        for (std::uint64_t k = 0; k < count; ++k)
          ASSERT_EQ(part[f * count + k], whole[f * 37 + first + k]);
    }
  }
}

}  // namespace
