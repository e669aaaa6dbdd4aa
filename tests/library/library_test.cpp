// The library against the tools, which are the same engine, and what only a caller in the same
// process can see: shapes, sinks, exceptions and threads.
#include <gtest/gtest.h>
#include <zelsvm/zelsvm.h>

#include <cmath>
#include <latch>
#include <limits>
#include <thread>
#include <utility>

#include "support/captured_output.h"
#include "support/library_samples.h"
#include "support/programs/tool_runs.h"
#include "support/temp_file.h"

namespace {

using zelsvm::Formulation;
using zelsvm::Kernel;
using zelsvm::Model;
using zelsvm::Parameters;
using zelsvm::Progress;
using zeltest::dense;
using zeltest::expectNear;
using zeltest::numbersIn;
using zeltest::Samples;
using zeltest::sparse;
using zeltest::succeed;
using zeltest::words;
using zeltest::Workspace;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// Features and targets that a data file holds without rounding, and in each row one that is not 0:
// a model file has no room for support vectors without features.
Samples exact(Samples samples) {
  for (auto* values : {&samples.values, &samples.labels})
    for (double& value : *values) value = std::round(8 * value) / 8;
  for (std::uint64_t i = 0; i < samples.values.size(); i += samples.cols)
    if (samples.values[i] == 0) samples.values[i] = 0.125;
  return samples;
}

Samples threeClasses() { return exact(zeltest::classSamples(90, 4, {2, -1, 5}, 1)); }
Samples targets() { return exact(zeltest::targetSamples(70, 3, 2)); }

// The numbers of the tool's predictions in its order: a line of labels first, where there is one.
std::vector<double> inToolOrder(const Model& model, const zelsvm::Predictions& found) {
  std::vector<double> numbers;
  const std::size_t labels = found.probabilities.size() / found.values.size();
  if (labels != 0) {
    numbers.push_back(0);  // "labels:"
    for (const double label : model.labels()) numbers.push_back(label);
  }
  for (std::size_t i = 0; i < found.values.size(); ++i) {
    numbers.push_back(found.values[i]);
    for (std::size_t k = 0; k < labels; ++k) numbers.push_back(found.probabilities[i * labels + k]);
  }
  return numbers;
}

// Both train, predict and cross-validate with the same settings.
void expectAsTools(const std::string& options, Parameters parameters, const Samples& samples) {
  SCOPED_TRACE(options);
  const Workspace workspace;
  workspace.write("data", fileText(samples));
  const zelsvm::Samples rows = options == "-X " ? dense(samples) : sparse(samples);
  parameters.randomSeed = 7;
  const std::string train = "zelsvm-train -R 7 " + options;

  std::string messages;
  const zelsvm::Sink sink{.message = [&](std::string_view text) { messages += text; }};
  const Model model = zelsvm::train(rows, samples.labels, parameters, sink);
  model.save((workspace.folder() / "own").string());
  const std::string printed = succeed(workspace, words(train + "data model"));
  EXPECT_EQ(workspace.read("own"), workspace.read("model"));
  EXPECT_EQ(model.featureCount(), samples.cols);
  EXPECT_EQ(model.formulation(), parameters.formulation);
  EXPECT_EQ(printed.substr(printed.find("\n\n") + 2),
            messages + "Total nSV = " + std::to_string(model.supportVectorCount()) + "\n");

  const bool probability = model.hasProbability();
  const std::string predict = std::string("zelsvm-predict -b ") + (probability ? "1" : "0");
  succeed(workspace, words(predict + " data model out"));
  const Model loaded = Model::load((workspace.folder() / "model").string());
  for (const Model* used : {&model, &loaded})
    expectNear(numbersIn(workspace.read("out")),
               inToolOrder(*used, used->predict(rows, probability)), 1e-5);

  const std::string report = succeed(workspace, words(train + "-v 4 data"));
  std::string individual = report.substr(report.find(":\n  ", report.find("ndividual")) + 4);
  std::erase(individual, '%');
  std::vector<double> measures;
  for (const auto& score : zelsvm::crossValidate(rows, samples.labels, parameters, 4).folds)
    measures.push_back(parameters.formulation >= Formulation::epsilonRegression
                           ? score.meanSquaredError
                           : score.accuracy);
  expectNear(numbersIn(individual), measures, 1e-5);
}

TEST(Library, TrainsPredictsAndValidatesAsTheToolsDo) {
  expectAsTools("", {}, threeClasses());
  expectAsTools("-X ", {}, threeClasses());
  expectAsTools("-b 1 -c 2 -w 2:3 -x -1:1 ",
                {.cost = 2, .classWeights = {{2, 3}}, .probability = true, .featureScale = {-1, 1}},
                threeClasses());
  expectAsTools("-s 1 -t 0 -n 0.2 -m 1 -k 0 ",
                {.formulation = Formulation::nuClassification,
                 .kernel = Kernel::linear,
                 .nu = 0.2,
                 .cacheMegabytes = 1,
                 .shrinking = false},
                threeClasses());
  expectAsTools("-s 2 -t 3 -g 0.1 -r -0.5 -n 0.3 ",
                {.formulation = Formulation::oneClass,
                 .kernel = Kernel::sigmoid,
                 .gamma = 0.1,
                 .coef0 = -0.5,
                 .nu = 0.3},
                threeClasses());
  expectAsTools("-s 3 -t 1 -d 2 -r 1 -p 0.05 -e 0.01 -L 100000 -y 0:2 -x 0:1 -b 1 ",
                {.formulation = Formulation::epsilonRegression,
                 .kernel = Kernel::polynomial,
                 .coef0 = 1,
                 .degree = 2,
                 .epsilon = 0.05,
                 .tolerance = 0.01,
                 .maxIterations = 100000,
                 .probability = true,
                 .featureScale = {0, 1},
                 .targetScale = {0, 2}},
                targets());
  expectAsTools("-s 4 -c 3 ", {.formulation = Formulation::nuRegression, .cost = 3}, targets());
}

TEST(Library, LayoutOwnershipAndWidthDoNotMatter) {
  const Samples samples = threeClasses();
  const Model model = zelsvm::train(sparse(samples), samples.labels);
  const auto expected = model.predict(sparse(samples));
  EXPECT_EQ(expected.values.size(), 90u);
  EXPECT_EQ(expected.decisionValues.size(), 3 * 90u);
  EXPECT_EQ(expected.probabilities.size(), 0u);
  expectNear(expected.decisionValues, model.predict(dense(samples)).decisionValues, 1e-12);
  const Model densely =
      zelsvm::train(zelsvm::Samples::dense(std::vector<double>(samples.values), 4), samples.labels);
  expectNear(expected.decisionValues, densely.predict(sparse(samples)).decisionValues, 1e-9);

  // Trained with a last feature that is 0: samples without it are the same samples.
  std::vector<double> wide;
  for (std::uint64_t i = 0; i < samples.rows(); ++i) {
    wide.insert(wide.end(), samples.row(i), samples.row(i) + 4);
    wide.push_back(0);
  }
  const zelsvm::Samples wider = zelsvm::Samples::dense(wide, 5);
  const Model wideModel = zelsvm::train(wider, samples.labels);
  const auto full = wideModel.predict(wider);
  EXPECT_EQ(wideModel.predict(dense(samples)).decisionValues, full.decisionValues);
  expectNear(full.decisionValues, wideModel.predict(sparse(samples)).decisionValues, 1e-12);
  expectNear(expected.decisionValues, model.predict(wider).decisionValues, 1e-12);
}

template <typename Call>
void expectRefusal(const std::string& message, const Call& call) {
  EXPECT_EQ(zeltest::failureOf<zelsvm::AppException>(call), message);
}

TEST(Library, ArraysThatAreNoRowsAreRefused) {
  const std::vector<double> two{1, 2};
  const std::string whole = "Dense samples must be whole rows of features, at least one.";
  for (const std::size_t features : {0, 3})
    expectRefusal(whole, [&] { zelsvm::Samples::dense(two, features); });
  expectRefusal(whole, [] { zelsvm::Samples::dense(std::vector<double>{}, 3); });
  const std::string empty = "Sparse samples must have features and at least one row.";
  const std::string offsets =
      "The row offsets do not fit the values and columns of the sparse rows.";
  const std::string outside = "A column of the sparse rows lies outside of the features.";
  struct Case {
    std::string message;
    std::vector<int> columns, offsets;
    std::size_t features = 2;
  };
  const Case cases[] = {{empty, {0}, {0, 1}, 0},
                        {empty, {}, {0}},
                        {empty, {0}, {0, 1}, std::size_t{1} << 31},
                        {offsets, {0}, {0, 2}},
                        {offsets, {0}, {1, 1}},
                        {offsets, {0, 1}, {0, 3, 2}},
                        {offsets, {0, 1}, {0, -1, 2}},
                        {outside, {2}, {0, 1}},
                        {outside, {-1}, {0, 1}},
                        {"A column stands twice in a sparse row.", {1, 0, 1}, {0, 3}}};
  for (const Case& c : cases)
    expectRefusal(c.message, [&] {
      const std::vector<double> values(c.columns.size(), 1.0);
      zelsvm::Samples::csr(values, c.columns, c.offsets, c.features);
    });
}

// One of each way into the engine; the engine's own tests have the rest.
TEST(Library, BadCallsAreRefused) {
  const Samples samples = threeClasses();
  const zelsvm::Samples rows = dense(samples);
  const Model model = zelsvm::train(rows, samples.labels);
  const std::vector<double> two{1, 2};
  const std::vector<double> bad{nan, 0, 0, 0};
  const auto expectBadTraining = [&](const std::string& message, const Parameters& parameters,
                                     const zelsvm::Sink& sink = {}) {
    expectRefusal(
        message, [&] { static_cast<void>(zelsvm::train(rows, samples.labels, parameters, sink)); });
  };
  expectBadTraining("Unsupported SVM type", {.formulation = static_cast<Formulation>(5)});
  expectBadTraining("The parameter classWeights must be above 0.", {.classWeights = {{1, 0}}});
  expectBadTraining("The parameter featureScale must have its lower end below its upper one.",
                    {.featureScale = {1, 0}});
  expectBadTraining("A sink must not call the library.", {},
                    {.message = [&](auto) { static_cast<void>(model.predict(rows)); }});
  expectRefusal("There must be one label or target for every sample.",
                [&] { static_cast<void>(zelsvm::train(rows, two)); });
  expectRefusal("Cross-validation needs at least 2 folds.",
                [&] { static_cast<void>(zelsvm::crossValidate(rows, samples.labels, {}, 1)); });
  expectRefusal("The features of sample 1 are not finite numbers.",
                [&] { static_cast<void>(zelsvm::train(zelsvm::Samples::dense(bad, 2), two)); });
  expectRefusal("The decision value of sample 1 is not a number.",
                [&] { static_cast<void>(model.predict(zelsvm::Samples::dense(bad, 4))); });
  expectRefusal("The model does not contain probability parameters.",
                [&] { static_cast<void>(model.predict(rows, true)); });
  expectRefusal("The model was moved away.", [&] {
    Model source = zelsvm::train(rows, samples.labels);
    const Model target = std::move(source);
    static_cast<void>(source.predict(rows));  // NOLINT(bugprone-use-after-move)
  });
  EXPECT_EQ(model.predict(rows).values, zelsvm::train(rows, samples.labels).predict(rows).values);
}

TEST(Library, ParametersThatAreNoNumbersAreRefusedByName) {
  const std::vector<double> values{1, 2};
  const zelsvm::Samples rows = zelsvm::Samples::dense(values, 1);
  const auto expectRefused = [&](const std::string& name, const Parameters& parameters) {
    expectRefusal("The parameter " + name + " is not a finite number.",
                  [&] { static_cast<void>(zelsvm::crossValidate(rows, values, parameters, 2)); });
  };
  for (const double v : {nan, HUGE_VAL, -HUGE_VAL}) {
    for (const auto& [name, member] : {std::pair{"coef0", &Parameters::coef0},
                                       {"degree", &Parameters::degree},
                                       {"cost", &Parameters::cost},
                                       {"nu", &Parameters::nu},
                                       {"epsilon", &Parameters::epsilon},
                                       {"tolerance", &Parameters::tolerance}}) {
      Parameters parameters;
      parameters.*member = v;
      expectRefused(name, parameters);
    }
    expectRefused("gamma", {.gamma = v});
    expectRefused("classWeights", {.classWeights = {{1, v}}});
    expectRefused("classWeights", {.classWeights = {{v, 1}}});
    expectRefused("featureScale", {.featureScale = {v, v}});
    expectRefused("featureScale", {.featureScale = {0, v}});
    expectRefused("targetScale", {.targetScale = {v, 1}});
  }
}

// Where the tools say 0, which may be no label at all.
TEST(Library, DecisionsOfZeroGoToTheFirstLabel) {
  const Workspace workspace;
  workspace.write(
      "model",
      "SvmType: smo-C-classification\nKernelType: linear\nNrClass: 3\nTotalSV: 3\n"
      "Rho: 0 0 0\nLabels: 4 6 9\nNrSV: 1 1 1\nSV:\n1 1 1:1 \n-1 1 1:-1 \n-1 -1 1:2 \n");
  workspace.write("data", "4 1:0\n9 1:-1\n");
  succeed(workspace, words("zelsvm-predict -q data model out"));
  EXPECT_EQ(workspace.read("out"), "0 \n6 \n");
  const Model model = Model::load((workspace.folder() / "model").string());
  const std::vector<double> values{0, -1};
  EXPECT_EQ(model.predict(zelsvm::Samples::dense(values, 1)).values, (std::vector<double>{4, 6}));

  // Leaving out the sample in the middle leaves a machine that says 0 of it.
  const std::vector<double> line{-1, 0, 1};
  const std::vector<double> labels{7, 7, 8};
  const auto found = zelsvm::crossValidate(zelsvm::Samples::dense(line, 1), labels,
                                           {.kernel = Kernel::linear, .randomSeed = 1}, 3);
  EXPECT_EQ(found.predictions[1], 7);
}

// As many features as indices can count, of which two have values.
TEST(Library, FeaturesThatNobodyUsesTakeNoMemory) {
  constexpr std::size_t features = 2147483647;
  const std::vector<double> values{1, 2, 3, 1, 4, 2};
  const std::vector<int> columns{0, 70000, 0, 70000, 70000, 0};
  const std::vector<int> narrow{0, 1, 0, 1, 1, 0};
  const std::vector<int> offsets{0, 2, 4, 6};
  const std::vector<double> targets{1, 2, 4};
  for (const zelsvm::Interval scale : {zelsvm::Interval{}, {-1, 1}}) {
    const Parameters parameters{
        .formulation = Formulation::epsilonRegression, .gamma = 0.5, .featureScale = scale};
    const auto wide = zelsvm::Samples::csr(values, columns, offsets, features);
    const auto small = zelsvm::Samples::csr(values, narrow, offsets, 2);
    const Model model = zelsvm::train(wide, targets, parameters);
    EXPECT_EQ(model.featureCount(), features);
    const auto expected = zelsvm::train(small, targets, parameters).predict(small).values;
    expectNear(model.predict(wide).values, expected, 1e-12);
    const Workspace workspace;
    model.save((workspace.folder() / "model").string());
    const Model loaded = Model::load((workspace.folder() / "model").string());
    expectNear(loaded.predict(wide).values, expected, 1e-4);
    const std::vector<double> row{1};
    expectNear(loaded.predict(zelsvm::Samples::dense(row, 1)).values,
               model.predict(zelsvm::Samples::dense(row, 1)).values, 1e-4);
  }
}

TEST(Library, SinksHearWhatTheyAskFor) {
  const Samples samples = exact(zeltest::classSamples(400, 5, {1, 2}, 3));
  zeltest::CapturedOutput console;
  const Model model = zelsvm::train(sparse(samples), samples.labels, {.cost = 100});
  static_cast<void>(model.predict(sparse(samples)));
  EXPECT_EQ(console.text(), "");

  std::vector<Progress> reports;
  std::string text;
  const auto train = [&](const zelsvm::Sink& sink) {
    return zelsvm::train(sparse(samples), samples.labels, {.cost = 100}, sink);
  };
  train({.message = [&](std::string_view message) { text += message; },
         .progress = [&](const Progress& progress) { reports.push_back(progress); },
         .verbose = false,
         .progressSeconds = 0});
  EXPECT_EQ(text.substr(0, 22), "\nFinished optimization");
  EXPECT_EQ(text.find("nSV"), std::string::npos);
  ASSERT_GT(reports.size(), 3u);
  for (std::size_t i = 1; i < reports.size(); ++i) {
    EXPECT_GT(reports[i].iterations, reports[i - 1].iterations);
    EXPECT_GE(reports[i].seconds, reports[i - 1].seconds);
    EXPECT_EQ(reports[i].tolerance, 0.001);
    EXPECT_GT(reports[i].gap, 0.001);
    EXPECT_TRUE(reports[i].cacheHitRate > 0 && reports[i].cacheHitRate < 1);
    EXPECT_GT(reports[i].supportVectors, 0u);
  }
  EXPECT_NEAR(static_cast<double>(reports.back().supportVectors),
              static_cast<double>(model.supportVectorCount()), 40);

  struct Stop {};
  const zelsvm::Sink stopping{.progress =
                                  [](const Progress& progress) {
                                    if (progress.iterations > 100) throw Stop{};
                                  },
                              .progressSeconds = 0};
  EXPECT_THROW(train(stopping), Stop);
  EXPECT_EQ(train({}).predict(sparse(samples)).decisionValues,
            model.predict(sparse(samples)).decisionValues);
}

// Each prediction waits in its first message for those of the other threads.
TEST(Library, AModelPredictsInThreadsSideBySide) {
  const Samples samples = threeClasses();
  const Model model = zelsvm::train(dense(samples), samples.labels);
  const std::vector<double> expected = model.predict(dense(samples)).decisionValues;
  std::latch inside(3);
  std::vector<double> found[3];
  std::vector<std::thread> threads;
  for (auto& result : found)
    threads.emplace_back([&] {
      bool first = true;
      const zelsvm::Sink sink{.message = [&](std::string_view) {
        if (std::exchange(first, false)) inside.count_down();
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!inside.try_wait() && std::chrono::steady_clock::now() < end)
          std::this_thread::yield();
        EXPECT_TRUE(inside.try_wait());
      }};
      result = model.predict(dense(samples), false, sink).decisionValues;
    });
  for (auto& thread : threads) thread.join();
  for (const auto& result : found) EXPECT_EQ(result, expected);
}

}  // namespace
