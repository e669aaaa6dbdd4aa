// Decision values against plain loops.
#include <gtest/gtest.h>

#include <cmath>

#include "base/errors.h"
#include "base/output/console.h"
#include "prediction/prediction_handlers.h"
#include "support/models.h"
#include "support/quiet.h"

namespace {

using zelsvm::HostVector;
using zelsvm::SvmParameters;
using zeltest::MadeModel;
using zeltest::Samples;
using zeltest::unlabelled;
using zeltest::valuesOf;
using Values = std::vector<double>;
using Predictor = zelsvm::GenericPredictor<double>;

class PredictorTest : public testing::Test {
 protected:
  const zeltest::Quiet quiet;
};

SvmParameters parametersFor(int kernel, bool sparse, double degree = 3.9) {
  SvmParameters parameters;
  parameters.kernelType = kernel;
  parameters.sparse = sparse;
  parameters.gamma = 0.3;
  parameters.coef0 = -0.4;
  parameters.degree = degree;
  return parameters;
}

Samples randomRows(std::uint64_t rows, std::uint64_t cols, unsigned seed) {
  return zeltest::classSamples(rows, cols, {0}, seed);
}

Samples widened(const Samples& samples, std::uint64_t cols) {
  Samples wide{cols, {}, samples.labels};
  for (std::uint64_t i = 0; i < samples.rows(); ++i) {
    wide.values.insert(wide.values.end(), samples.row(i), samples.row(i) + samples.cols);
    wide.values.resize((i + 1) * cols);
  }
  return wide;
}

// f(x) of every test sample; c[k] is the coefficient of support vector k.
void expectFunction(const MadeModel& made, const Values& c, double rho, const Samples& test,
                    const double* values) {
  const Samples vectors = widened(made.rows, test.cols);
  for (std::uint64_t i = 0; i < test.rows(); ++i) {
    long double sum = 0;
    double magnitude = std::abs(rho);
    for (std::uint64_t k = 0; k < vectors.rows(); ++k) {
      if (c[k] == 0) continue;
      const long double term =
          c[k] * zeltest::kernelValue(made.context, test.row(i), vectors.row(k), test.cols);
      sum += term;
      magnitude += static_cast<double>(std::abs(term));
    }
    ASSERT_NEAR(values[i], static_cast<double>(sum - rho), 1e-12 * magnitude) << i;
  }
}

Values pairCoefficients(const MadeModel& made, std::uint64_t a, std::uint64_t b) {
  HostVector<double> c(made.rows.rows());
  made.model.pairCoefficients(c, a, b);
  return valuesOf(c);
}

// Two labels; test samples wider than the support vectors, over several blocks and one short one.
TEST_F(PredictorTest, AgreesWithPlainLoops) {
  struct Shape {
    std::uint64_t vectors, cols, tests, width;
  };
  for (const Shape& shape : {Shape{20, 7, 600, 7}, Shape{20, 7, 257, 10}, Shape{2500, 3, 30, 5},
                             Shape{1, 1, 1, 1}, Shape{128, 2, 256, 2}})
    for (const int kernel : zeltest::allKernels)
      for (const bool sparse : {false, true}) {
        MadeModel made(parametersFor(kernel, sparse), randomRows(shape.vectors, shape.cols, 1),
                       {-1, 1}, {shape.vectors / 3, shape.vectors - shape.vectors / 3}, 2);
        const Samples test = randomRows(shape.tests, shape.width, 3);
        const Values values = zeltest::decisionValues(made.context, made.model, test);
        ASSERT_EQ(values.size(), shape.tests);
        SCOPED_TRACE(testing::Message() << shape.vectors << " kernel " << kernel << sparse);
        expectFunction(made, pairCoefficients(made, 0, 1), made.rho[0], test, values.data());
      }
}

// Classes below, at and above a tile of vectors, and an empty one; blocks of samples likewise.
TEST_F(PredictorTest, ManyLabelsAgreeAtEveryTileAndBlockSize) {
  const std::vector<unsigned long long> sizes{513, 1, 0, 511, 512};
  const std::vector<double> labels{1, 2, 3, 4, 7};
  for (const int kernel : zeltest::allKernels)
    for (const bool sparse : {false, true}) {
      MadeModel made(parametersFor(kernel, sparse), randomRows(1537, 3, 1), labels, sizes, 2);
      for (const std::uint64_t tests : {1, 31, 33, 289}) {
        const Samples test = randomRows(tests, 4, 3);
        const Values values = zeltest::decisionValues(made.context, made.model, test);
        ASSERT_EQ(values.size(), 10 * tests);
        for (std::uint64_t a = 0, q = 0; a < 5; ++a)
          for (std::uint64_t b = a + 1; b < 5; ++b, ++q) {
            SCOPED_TRACE(testing::Message() << kernel << sparse << tests << " pair " << q);
            expectFunction(made, pairCoefficients(made, a, b), made.rho[q], test,
                           &values[tests * q]);
          }
      }
    }
}

TEST_F(PredictorTest, RegressionGivesTheFunctionItself) {
  SvmParameters parameters = parametersFor(zelsvm::SVM_KERNEL_RADIAL, false);
  parameters.svmType = zelsvm::SVM_TYPE_EPSILON_REGRESSION;
  MadeModel made(parameters, randomRows(12, 4, 1), {}, {}, 2);
  const Samples test = randomRows(300, 4, 3);
  zeltest::DataSet data(test, made.context);
  Predictor predictor(made.context, made.model);
  zeltest::RecordingHandler first;
  zeltest::RecordingHandler second;
  predictor.addHandler(first);
  predictor.addHandler(second);
  HostVector<double> output(300);
  predictor.predict(output, data.data().matrix());
  EXPECT_TRUE(first.sameVector && second.sameVector);
  const Values values = valuesOf(output);
  expectFunction(made, made.coefficients, made.rho[0], test, values.data());
  EXPECT_EQ(second.outputs, values);

  // Into every second place of a longer vector, as cross-validation does.
  std::vector<unsigned long long> places;
  for (unsigned long long i = 0; i < 300; ++i) places.push_back(2 * i + 1);
  const auto filter = zeltest::indexList(places);
  Values target(601, 77);
  zelsvm::FilteredVector<double> scattered(target.size(), target.data(), filter);
  predictor.predict(scattered, data.data().matrix());
  for (std::size_t i = 0; i < 300; ++i) {
    ASSERT_EQ(target[2 * i + 1], values[i]) << i;
    ASSERT_EQ(target[2 * i], 77) << i;
  }
}

// The first handler resolves, the next sees what it resolved; no vote leaves the 0 of the start.
TEST_F(PredictorTest, HandlersRunInOrderOverAClearedOutput) {
  MadeModel made(parametersFor(zelsvm::SVM_KERNEL_LINEAR, false), unlabelled(1, {1}), {4, 9},
                 {1, 0}, 2);
  made.model.setCoefficients(zeltest::hostVector<double>({1}));
  made.model.setRho(zeltest::hostVector<double>({2}));
  zeltest::DataSet data(unlabelled(1, {1, 2, 3}), made.context);
  Predictor predictor(made.context, made.model);
  zeltest::RecordingHandler before;
  zelsvm::MulticlassResolver<double> resolver;
  zeltest::RecordingHandler after;
  predictor.addHandler(before);
  predictor.addHandler(resolver);
  predictor.addHandler(after);
  HostVector<double> output = zeltest::hostVector<double>({7, 7, 7});
  predictor.predict(output, data.data().matrix());
  EXPECT_EQ(before.outputs, (Values{0, 0, 0}));
  EXPECT_EQ(after.values, (Values{-1, 0, 1}));
  EXPECT_EQ(after.outputs, (Values{9, 0, 4}));
}

TEST_F(PredictorTest, RefusesTestsNarrowerThanTheModel) {
  for (const bool sparse : {false, true}) {
    MadeModel wide(parametersFor(zelsvm::SVM_KERNEL_RADIAL, sparse), randomRows(3, 4, 1), {1, 2},
                   {2, 1}, 2);
    EXPECT_THROW(zeltest::decisionValues(wide.context, wide.model, randomRows(2, 3, 1)),
                 zel::RuntimeException);
  }
}

}  // namespace
