// Precomputed kernels: the values of a kernel function, given as numbers or by a function, do what
// the kernel function does.
#include <gtest/gtest.h>
#include <zelsvm/zelsvm.h>

#include <cmath>
#include <thread>

#include "support/samples.h"
#include "support/temp_file.h"

namespace {

using zelsvm::Formulation;
using zelsvm::Kernel;
using zelsvm::KernelColumns;
using zelsvm::Model;
using zelsvm::Parameters;
using zelsvm::Table;
using zeltest::Samples;

// Features whose products neither round nor outgrow single precision.
Samples whole(Samples samples) {
  for (double& value : samples.values) value = std::round(4 * value);
  return samples;
}

Samples labelled(std::uint64_t count, const std::vector<double>& labels) {
  return whole(zeltest::classSamples(count, 5, labels, 6));
}

Samples targeted(std::uint64_t count) {
  Samples samples = zeltest::targetSamples(count, 5, 8);
  return whole(std::move(samples));
}

double product(const double* u, const double* v, std::uint64_t cols) {
  double sum = 0;
  for (std::uint64_t k = 0; k < cols; ++k) sum += u[k] * v[k];
  return sum;
}

double radial(const double* u, const double* v, std::uint64_t cols) {
  double sum = 0;
  for (std::uint64_t k = 0; k < cols; ++k) sum += (u[k] - v[k]) * (u[k] - v[k]);
  return std::exp(-0.05 * sum);
}

// Row after row.
template <typename Number>
std::vector<Number> kernelOf(const Samples& rows, const Samples& columns,
                             double (*kernel)(const double*, const double*, std::uint64_t)) {
  std::vector<Number> values;
  for (std::uint64_t i = 0; i < rows.rows(); ++i)
    for (std::uint64_t j = 0; j < columns.rows(); ++j)
      values.push_back(static_cast<Number>(kernel(rows.row(i), columns.row(j), rows.cols)));
  return values;
}

template <typename Number>
zelsvm::Samples given(const std::vector<Number>& values, std::size_t rows,
                      KernelColumns columns = KernelColumns::trainingSamples) {
  return zelsvm::Samples::kernel(Table(values.data(), rows, values.size() / rows), columns);
}

// By a function, which must be called on this thread only.
zelsvm::Samples computed(const std::vector<double>& values, std::size_t rows,
                         std::vector<double> diagonal = {}, std::size_t* calls = nullptr) {
  const std::size_t columns = values.size() / rows;
  const auto compute = [&values, columns, calls, caller = std::this_thread::get_id()](
                           std::size_t row, std::span<double> target) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    EXPECT_EQ(target.size(), columns);
    if (calls != nullptr) ++*calls;
    std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(row * columns), columns,
                target.begin());
  };
  return zelsvm::Samples::kernel(
      {.rows = rows, .columns = columns, .compute = compute, .diagonal = std::move(diagonal)});
}

// All that a training gives.
struct Results {
  std::size_t supportVectors;
  std::vector<double> values;
  bool operator==(const Results&) const = default;
};

Results resultsOf(const zelsvm::Samples& training, const zelsvm::Samples& test,
                  const std::vector<double>& targets, const Parameters& parameters,
                  bool validate = true) {
  const Model model = zelsvm::train(training, targets, parameters);
  const bool perLabel =
      parameters.probability && parameters.formulation == Formulation::cClassification;
  const auto found = model.predict(test, perLabel);
  Results results{model.supportVectorCount(), found.values};
  const auto append = [&](const std::vector<double>& more) {
    results.values.insert(results.values.end(), more.begin(), more.end());
  };
  append(found.decisionValues);
  append(found.probabilities);
  results.values.push_back(model.residualScale());
  if (validate) append(zelsvm::crossValidate(training, targets, parameters, 3).predictions);
  return results;
}

// The linear function on features, on values in every form, and the test's values in every form.
void expectSameBits(const char* what, const Samples& samples, Parameters parameters,
                    bool withFunction) {
  SCOPED_TRACE(what);
  parameters.randomSeed = 5;
  parameters.kernel = Kernel::linear;
  const std::size_t n = samples.rows();
  const Samples test = samples.selection({0, 7, 3, 11, 4, 20, 1});
  const Results expected =
      resultsOf(zelsvm::Samples::dense(samples.values, samples.cols),
                zelsvm::Samples::dense(test.values, test.cols), samples.labels, parameters);
  parameters.kernel = Kernel::precomputed;
  const auto doubles = kernelOf<double>(samples, samples, product);
  const auto testDoubles = kernelOf<double>(test, samples, product);
  EXPECT_TRUE(resultsOf(given(doubles, n), given(testDoubles, 7), samples.labels, parameters) ==
              expected);
  const auto floats = kernelOf<float>(samples, samples, product);
  const auto turned = kernelOf<float>(samples, test, product);
  EXPECT_TRUE(resultsOf(given(floats, n), zelsvm::Samples::kernel(Table(turned.data(), 7, n, 1, 7)),
                        samples.labels, parameters) == expected);
  if (!withFunction) return;
  EXPECT_TRUE(resultsOf(computed(doubles, n), computed(testDoubles, 7), samples.labels,
                        parameters) == expected);
  std::vector<double> diagonal;
  for (std::size_t i = 0; i < n; ++i) diagonal.push_back(doubles[i * n + i]);
  EXPECT_TRUE(resultsOf(computed(doubles, n, diagonal), given(testDoubles, 7), samples.labels,
                        parameters) == expected);
}

TEST(LibraryPrecomputed, GivenValuesDoWhatTheFunctionDoes) {
  const Samples labels = labelled(150, {4, -2, 7});
  const Samples targets = targeted(120);
  expectSameBits("C", labels, {.cost = 0.5, .classWeights = {{-2, 3}}, .probability = true}, true);
  expectSameBits("nu", labels, {.formulation = Formulation::nuClassification, .nu = 0.3}, true);
  expectSameBits("one class", labels, {.formulation = Formulation::oneClass, .nu = 0.2}, true);
  expectSameBits("epsilon", targets,
                 {.formulation = Formulation::epsilonRegression,
                  .cost = 0.5,
                  .maxIterations = 20000,
                  .probability = true,
                  .targetScale = {0, 1}},
                 true);
  expectSameBits("nu regression", targets,
                 {.formulation = Formulation::nuRegression, .maxIterations = 20000}, true);
}

// Enough samples for working sets, which take single precision where they can.
TEST(LibraryPrecomputed, ManySamplesDoTheSame) {
  expectSameBits("C", labelled(1600, {1, 2}), {.cost = 0.01}, false);
  expectSameBits("one class", labelled(1600, {1}),
                 {.formulation = Formulation::oneClass, .nu = 0.1}, false);
  expectSameBits("epsilon", targeted(1600),
                 {.formulation = Formulation::epsilonRegression, .cost = 0.01, .epsilon = 0.5},
                 false);
}

// Pairs of samples, one after the other, and working sets end at the same optimum.
TEST(LibraryPrecomputed, FunctionsOfManySamplesEndAtTheSameOptimum) {
  const Samples samples = labelled(1600, {1, 2});
  const auto values = kernelOf<double>(samples, samples, radial);
  const Parameters exact{.gamma = 0.05, .tolerance = 1e-11};
  Parameters parameters = exact;
  parameters.kernel = Kernel::precomputed;
  const Samples test = samples.selection({0, 5, 9, 1500, 1599});
  const auto testValues = kernelOf<double>(test, samples, radial);
  const auto expected =
      zelsvm::train(zelsvm::Samples::dense(samples.values, samples.cols), samples.labels, exact)
          .predict(zelsvm::Samples::dense(test.values, test.cols));
  std::size_t calls = 0;
  for (const auto& training :
       {given(values, 1600), computed(values, 1600, std::vector<double>(1600, 1), &calls)}) {
    const Model model = zelsvm::train(training, samples.labels, parameters);
    const auto found = model.predict(given(testValues, 5));
    for (std::size_t i = 0; i < 5; ++i)
      EXPECT_NEAR(found.decisionValues[i], expected.decisionValues[i], 1e-9);
  }
  EXPECT_TRUE(calls > 0 && calls <= 1600) << "the cache holds all rows: " << calls;
}

// Pairs that would be trained side by side.
TEST(LibraryPrecomputed, FunctionsAreCalledByTheCallingThreadAlone) {
  const Samples samples = labelled(1500, {1, 2, 3});
  const auto values = kernelOf<double>(samples, samples, radial);
  const Parameters parameters{.kernel = Kernel::precomputed};
  const auto rows = given(values, 1500);
  EXPECT_EQ(zelsvm::train(computed(values, 1500), samples.labels, parameters)
                .predict(rows)
                .decisionValues,
            zelsvm::train(rows, samples.labels, parameters).predict(rows).decisionValues);
}

// Samples that weights remove keep their columns.
TEST(LibraryPrecomputed, WeightsCountAsForFeatures) {
  const Samples samples = labelled(150, {4, -2, 7});
  std::vector<double> weights;
  for (std::size_t i = 0; i < 150; ++i) weights.push_back(static_cast<double>(i * 7 % 4) / 2);
  const auto values = kernelOf<double>(samples, samples, product);
  const auto features = zelsvm::Samples::dense(samples.values, samples.cols);
  for (const Formulation formulation :
       {Formulation::cClassification, Formulation::oneClass, Formulation::nuRegression}) {
    Parameters parameters{.formulation = formulation, .kernel = Kernel::linear, .cost = 0.1};
    parameters.maxIterations = 20000;
    const auto expected =
        zelsvm::train(features, samples.labels, parameters, weights).predict(features);
    parameters.kernel = Kernel::precomputed;
    for (const auto& rows : {given(values, 150), computed(values, 150)}) {
      const auto found = zelsvm::train(rows, samples.labels, parameters, weights).predict(rows);
      EXPECT_EQ(found.values, expected.values);
      EXPECT_EQ(found.decisionValues, expected.decisionValues);
    }
  }
}

TEST(LibraryPrecomputed, ModelsOutliveTheValuesTheyWereTrainedOn) {
  const Samples samples = labelled(90, {4, -2, 7});
  const Parameters parameters{.kernel = Kernel::precomputed, .cost = 0.2};
  const Samples test = samples.selection({8, 2, 30});
  const auto testValues = kernelOf<double>(test, samples, product);
  auto values = std::make_unique<std::vector<double>>(kernelOf<double>(samples, samples, product));
  const Model model = zelsvm::train(given(*values, 90), samples.labels, parameters);
  const Model other = zelsvm::train(computed(*values, 90), samples.labels, parameters);
  values.reset();
  EXPECT_EQ(model.featureCount(), 90u);
  EXPECT_EQ(model.predict(given(testValues, 3)).decisionValues,
            other.predict(given(testValues, 3)).decisionValues);
  const Model copy = Model::fromBytes(model.toBytes());
  EXPECT_EQ(copy.predict(given(testValues, 3)).decisionValues,
            model.predict(given(testValues, 3)).decisionValues);
  EXPECT_EQ(copy.supportIndices(), model.supportIndices());
  EXPECT_TRUE(copy.parameters().kernel == Kernel::precomputed);
  EXPECT_THROW(static_cast<void>(copy.supportVectors()), zelsvm::AppException);
}

// The support vectors' numbers, class by class: rows of the identity show their coefficients.
std::vector<std::uint64_t> supportVectors(const Model& model, const Samples& samples) {
  const std::size_t n = samples.rows();
  std::vector<double> identity((n + 1) * n, 0);
  for (std::size_t i = 0; i < n; ++i) identity[i * n + i] = 1;
  const auto found = model.predict(given(identity, n + 1));
  const auto& values = found.decisionValues.empty() ? found.values : found.decisionValues;
  const std::size_t functions = values.size() / (n + 1);
  std::vector<std::uint64_t> numbers;
  for (const double label : found.decisionValues.empty() ? std::vector<double>{0} : model.labels())
    for (std::size_t i = 0; i < n; ++i)
      if (!found.decisionValues.empty() && samples.labels[i] != label)
        continue;
      else if (!std::equal(values.begin() + static_cast<std::ptrdiff_t>(i * functions),
                           values.begin() + static_cast<std::ptrdiff_t>((i + 1) * functions),
                           values.end() - static_cast<std::ptrdiff_t>(functions)))
        numbers.push_back(i);
  return numbers;
}

TEST(LibraryPrecomputed, ValuesWithTheSupportVectorsAreEnough) {
  for (const Formulation formulation :
       {Formulation::cClassification, Formulation::epsilonRegression}) {
    const Samples samples =
        formulation == Formulation::cClassification ? labelled(150, {4, -2, 7}) : targeted(120);
    const std::size_t n = samples.rows();
    const auto values = kernelOf<double>(samples, samples, radial);
    const Model model =
        zelsvm::train(given(values, n), samples.labels,
                      {.formulation = formulation, .kernel = Kernel::precomputed, .epsilon = 0.5});
    const auto numbers = supportVectors(model, samples);
    ASSERT_EQ(numbers.size(), model.supportVectorCount());
    ASSERT_LT(numbers.size(), n);
    const Samples vectors = samples.selection(numbers);
    const auto narrow = kernelOf<float>(samples, vectors, radial);
    const auto wide = kernelOf<float>(samples, samples, radial);
    const auto expected = model.predict(given(wide, n));
    const auto found = model.predict(given(narrow, n, KernelColumns::supportVectors));
    EXPECT_EQ(found.values, expected.values);
    EXPECT_EQ(found.decisionValues, expected.decisionValues);
  }
}

TEST(LibraryPrecomputed, KernelsThatAreNotPositiveDefiniteEnd) {
  const Samples samples = labelled(1600, {1, 2});
  std::vector<double> values = kernelOf<double>(samples, samples, radial);
  for (std::size_t i = 0; i < 1600; ++i) values[i * 1600 + i] = i % 2 == 0 ? -0.5 : 0;
  for (const std::size_t count : {200u, 1600u})
    for (const Formulation formulation : {Formulation::cClassification, Formulation::oneClass}) {
      const Table<double> part(values.data(), count, count, 1600, 1);
      const std::vector<double> labels(samples.labels.begin(),
                                       samples.labels.begin() + static_cast<int>(count));
      const Model model =
          zelsvm::train(zelsvm::Samples::kernel(part), labels,
                        {.formulation = formulation, .kernel = Kernel::precomputed, .cost = 10});
      const auto found = model.predict(zelsvm::Samples::kernel(part));
      for (const double value : found.decisionValues) EXPECT_TRUE(std::isfinite(value));
    }
}

TEST(LibraryPrecomputed, ExceptionsOfAFunctionReachItsCaller) {
  const Samples samples = labelled(60, {4, -2, 7});
  const auto values = kernelOf<double>(samples, samples, product);
  struct Gone {
    std::size_t call;
  };
  const Parameters parameters{.kernel = Kernel::precomputed, .probability = true};
  const Model model = zelsvm::train(given(values, 60), samples.labels, parameters);
  for (const std::size_t last : {0u, 1u, 70u, 300u}) {
    std::size_t calls = 0;
    const auto failing = zelsvm::Samples::kernel(
        {.rows = 60, .columns = 60, .compute = [&](std::size_t row, std::span<double> target) {
           if (calls++ == last) throw Gone{last};
           std::copy_n(values.begin() + static_cast<std::ptrdiff_t>(60 * row), 60, target.begin());
         }});
    try {
      static_cast<void>(zelsvm::train(failing, samples.labels, parameters));
      ADD_FAILURE() << last;
    } catch (const Gone& gone) {
      EXPECT_EQ(gone.call, last);
      EXPECT_EQ(calls, last + 1);
    }
    calls = last;
    EXPECT_THROW(static_cast<void>(model.predict(failing)), Gone);
  }
}

TEST(LibraryPrecomputed, WhatDoesNotFitIsRefused) {
  const auto expectRefusal = [](const std::string& message, const auto& call) {
    EXPECT_EQ(zeltest::failureOf<zelsvm::AppException>([&] { static_cast<void>(call()); }),
              message);
  };
  const Samples samples = labelled(60, {1, 2});
  std::vector<double> values = kernelOf<double>(samples, samples, product);
  const auto kernel = given(values, 60);
  const auto features = zelsvm::Samples::dense(samples.values, samples.cols);
  const Parameters parameters{.kernel = Kernel::precomputed, .cost = 0.1};
  const auto train = [&](const zelsvm::Samples& rows, const Parameters& with) {
    return zelsvm::train(rows, samples.labels, with);
  };
  const Model model = train(kernel, parameters);
  const std::size_t vectors = model.supportVectorCount();
  ASSERT_LT(vectors, 60u);
  expectRefusal("A precomputed kernel needs kernel values, not features.",
                [&] { return train(features, parameters); });
  expectRefusal("Kernel values need the precomputed kernel.", [&] { return train(kernel, {}); });
  const std::string square =
      "Kernel values to train on must be those of all samples with each other.";
  expectRefusal(square, [&] {
    return train(zelsvm::Samples::kernel(Table(values.data(), 60, 59, 60, 1)), parameters);
  });
  expectRefusal(
      square, [&] { return train(given(values, 60, KernelColumns::supportVectors), parameters); });
  expectRefusal("The parameter featureScale does not go with a precomputed kernel.", [&] {
    return train(kernel, {.kernel = Kernel::precomputed, .featureScale = {0, 1}});
  });
  expectRefusal("This model takes kernel values, not features.",
                [&] { return model.predict(features); });
  expectRefusal("This model takes features, not kernel values.",
                [&] { return train(features, {}).predict(kernel); });
  expectRefusal("The kernel values must have a column for each of 60 samples.",
                [&] { return model.predict(given(values, 75)); });
  expectRefusal("The kernel values must have a column for each of " + std::to_string(vectors) +
                    " support vectors.",
                [&] { return model.predict(given(values, 60, KernelColumns::supportVectors)); });
  expectRefusal("A model of a precomputed kernel cannot be written as text.", [&] {
    model.save("unwritten");
    return 0;
  });
  expectRefusal("There must be kernel values, at least one.",
                [&] { return zelsvm::Samples::kernel(Table(values.data(), 0, 60)); });
  expectRefusal("Kernel rows need a function that computes them.",
                [&] { return zelsvm::Samples::kernel({.rows = 1, .columns = 1}); });
  expectRefusal("The diagonal of kernel rows must have a value for each of them.", [&] {
    return computed(values, 60, {1, 2});
  });
  // A function that leaves a value out, and a number that is none.
  expectRefusal("The kernel values of sample 1 are not finite numbers.", [&] {
    return model.predict(
        zelsvm::Samples::kernel({.rows = 1, .columns = 60, .compute = [](auto, auto) {}}));
  });
  values[60 * 17 + 17] = HUGE_VAL;
  for (const auto& bad : {given(values, 60), computed(values, 60)})
    expectRefusal("The kernel values of sample 18 are not finite numbers.",
                  [&] { return train(bad, parameters); });
}

}  // namespace
