// What a caller decides of a call: its threads, its end before its time, its numbers.
#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/library_samples.h"
#include "support/programs/tool_runs.h"
#include "support/temp_file.h"

namespace {

using zelsvm::Formulation;
using zelsvm::Gamma;
using zelsvm::Kernel;
using zelsvm::Model;
using zelsvm::Parameters;
using zeltest::dense;
using zeltest::Samples;
using zeltest::sparse;

using Clock = std::chrono::steady_clock;

std::size_t bytesInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Runs the call and has it cancelled after so many microseconds; true unless it was over by then.
bool isCancelled(const std::function<void(const zelsvm::Sink&)>& call, unsigned delay,
                 unsigned threads) {
  std::atomic<bool> cancelled = false;
  Clock::time_point wish;
  std::thread other([&] {
    std::this_thread::sleep_for(std::chrono::microseconds(delay));
    wish = Clock::now();
    cancelled = true;
  });
  bool ended = false;
  try {
    call({.threads = threads, .cancelled = &cancelled});
  } catch (const zelsvm::Cancelled&) {
    ended = true;
  }
  const Clock::time_point end = Clock::now();
  other.join();
  // Other programs may hold it back for a while.
  EXPECT_TRUE(!ended || end - wish < std::chrono::seconds(2));
  return ended;
}

TEST(LibraryControl, CallsAreCancelledAtAnyMoment) {
  const Samples two = zeltest::classSamples(2500, 8, {1, 2}, 1);
  const Samples many = zeltest::classSamples(1500, 8, {1, 2, 3, 4, 5, 6, 7}, 2);
  const Samples numbers = zeltest::targetSamples(900, 5, 3);
  const Model model = zelsvm::train(dense(two), two.labels);
  const zeltest::Workspace workspace;
  const std::string path = (workspace.folder() / "model").string();
  model.save(path);
  const Parameters hard{.cost = 1000, .tolerance = 1e-9};
  const std::function<void(const zelsvm::Sink&)> calls[] = {
      [&](const auto& sink) {
        static_cast<void>(zelsvm::train(dense(two), two.labels, hard, sink));
      },
      [&](const auto& sink) {
        static_cast<void>(
            zelsvm::train(sparse(many), many.labels, {.cost = 100, .probability = true}, sink));
      },
      [&](const auto& sink) {
        static_cast<void>(zelsvm::crossValidate(
            dense(numbers), numbers.labels,
            {.formulation = Formulation::nuRegression, .cost = 100, .tolerance = 1e-6}, 10, sink));
      },
      [&](const auto& sink) {
        for (int k = 0; k < 20; ++k) static_cast<void>(model.predict(dense(two), false, sink));
      },
      [&](const auto& sink) {
        for (int k = 0; k < 20; ++k) Model::load(path, 1, sink);
      }};
  std::mt19937 generator(1);
  unsigned ended = 0;
  std::size_t before = 0;
  for (unsigned k = 0; k < 200; ++k) {
    ended += isCancelled(calls[k % 5], static_cast<unsigned>(generator() % 20000), k % 3);
    if (k == 50) before = bytesInUse();
  }
  EXPECT_GT(ended, 100u);
  EXPECT_LT(bytesInUse(), before + (std::size_t{2} << 20));
  const std::atomic<bool> always = true;
  EXPECT_THROW(static_cast<void>(zelsvm::train(dense(two), two.labels, {}, {.cancelled = &always})),
               zelsvm::Cancelled);
}

// Each with its own number of threads, and one in four cancelled.
TEST(LibraryControl, TenCallsAtOnceDoNotDisturbEachOther) {
  const Samples samples = zeltest::classSamples(900, 6, {1, 2, 3, 4}, 7);
  const Parameters parameters{.cost = 10, .probability = true, .randomSeed = 5};
  const Model alone = zelsvm::train(sparse(samples), samples.labels, parameters, {.threads = 1});
  const std::string expected = alone.toBytes();
  const auto predicted = alone.predict(dense(samples), true);
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < 10; ++t)
    threads.emplace_back([&, t] {
      const std::atomic<bool> always = true;
      const zelsvm::Sink own{.threads = t % 4};
      EXPECT_EQ(zelsvm::train(sparse(samples), samples.labels, parameters, own).toBytes(),
                expected);
      if (t % 4 == 0) {
        EXPECT_THROW(static_cast<void>(alone.predict(dense(samples), true, {.cancelled = &always})),
                     zelsvm::Cancelled);
      }
      const auto found = alone.predict(dense(samples), true, own);
      EXPECT_EQ(found.probabilities, predicted.probabilities);
      EXPECT_EQ(found.decisionValues, predicted.decisionValues);
    });
  for (auto& thread : threads) thread.join();
}

TEST(LibraryControl, GammaIsTheNumberOrTheRule) {
  const Samples samples = zeltest::classSamples(80, 5, {1, 2}, 3);
  double mean = 0;
  double square = 0;
  for (const double value : samples.values) {
    mean += value / 400;
    square += value * value / 400;
  }
  const double expected = 1 / (5 * (square - mean * mean));
  for (const auto& rows : {dense(samples), sparse(samples)}) {
    const auto gammaOf = [&](const Parameters& parameters) {
      return zelsvm::train(rows, samples.labels, parameters).parameters().gamma.value;
    };
    EXPECT_NEAR(gammaOf({.gamma = Gamma::oneOverFeaturesTimesVariance}), expected, 1e-12);
    EXPECT_EQ(gammaOf({.gamma = Gamma::oneOverFeatures}), 0.2);
    EXPECT_EQ(gammaOf({}), 0.2);
  }
  // Twice as long an interval: a quarter of it.
  const auto scaledTo = [&](double end) {
    return zelsvm::train(dense(samples), samples.labels,
                         {.gamma = Gamma::oneOverFeaturesTimesVariance, .featureScale = {0, end}})
        .parameters()
        .gamma.value;
  };
  EXPECT_NEAR(scaledTo(2), scaledTo(1) / 4, 1e-12);

  const Model flat = zelsvm::train(dense(samples), samples.labels, {.gamma = 0});
  const auto values = flat.predict(dense(samples)).decisionValues;
  EXPECT_EQ(values, std::vector<double>(80, values[0]));
  EXPECT_EQ(Model::fromBytes(flat.toBytes()).predict(dense(samples)).decisionValues, values);
  EXPECT_EQ(zeltest::failureOf<zelsvm::AppException>([&] { flat.save("/dev/null"); }),
            "A model file has no room for a gamma of 0.");
}

TEST(LibraryControl, LabelsAreAnyFiniteNumbers) {
  Samples samples = zeltest::classSamples(120, 4, {0.5, -1.25, 1e300}, 3);
  const Samples whole = zeltest::classSamples(120, 4, {2, 1, 3}, 3);
  const Model model = zelsvm::train(dense(samples), samples.labels);
  const Model other = zelsvm::train(dense(whole), whole.labels);
  EXPECT_EQ(model.labels(), (std::vector<double>{-1.25, 0.5, 1e300}));
  const auto found = model.predict(dense(samples));
  const auto expected = other.predict(dense(whole));
  EXPECT_EQ(found.decisionValues, expected.decisionValues);
  for (std::size_t i = 0; i < 120; ++i)
    EXPECT_EQ(found.values[i], model.labels()[static_cast<std::size_t>(expected.values[i]) - 1]);
  EXPECT_EQ(zelsvm::crossValidate(dense(samples), samples.labels, {}, 3).overall.accuracy,
            zelsvm::crossValidate(dense(whole), whole.labels, {}, 3).overall.accuracy);
  samples.labels[2] = std::numeric_limits<double>::infinity();
  EXPECT_EQ(zeltest::failureOf<zelsvm::AppException>(
                [&] { static_cast<void>(zelsvm::train(dense(samples), samples.labels)); }),
            "The label of sample 3 is not a finite number.");
}

TEST(LibraryControl, ASeedOfZeroIsASeed) {
  const Samples samples = zeltest::classSamples(100, 3, {1, 2}, 3);
  const auto folds = [&](unsigned seed) {
    return zelsvm::crossValidate(dense(samples), samples.labels, {.randomSeed = seed}, 5)
        .predictions;
  };
  const auto first = folds(0);
  EXPECT_NE(first, folds(1));
  const unsigned start = zelsvm::seedFromClock();
  while (zelsvm::seedFromClock() == start)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(first, folds(0));
}

TEST(LibraryControl, ParametersOutOfRangeAreNamed) {
  const Samples samples = zeltest::classSamples(10, 2, {1, 2}, 3);
  const std::pair<Parameters, std::string> cases[] = {
      {{.gamma = -1}, "gamma must be at least 0"},
      {{.kernel = Kernel::linear, .gamma = -1}, "gamma must be at least 0"},
      {{.degree = -1}, "degree must be at least 0"},
      {{.cost = 0}, "cost must be above 0"},
      {{.classWeights = {{9, -1}}}, "classWeights must be above 0"},
      {{.nu = 0}, "nu must be above 0"},
      {{.nu = 1.5}, "nu must be at most 1"},
      {{.epsilon = -1}, "epsilon must be at least 0"},
      {{.tolerance = 0}, "tolerance must be above 0"},
      {{.targetScale = {1, 0}}, "targetScale must have its lower end below its upper one"},
      {{.featureScale = {-1.7e308, 1.7e308}}, "featureScale is too long"}};
  for (const auto& [parameters, message] : cases)
    EXPECT_EQ(zeltest::failureOf<zelsvm::AppException>([&, &chosen = parameters] {
                static_cast<void>(zelsvm::train(dense(samples), samples.labels, chosen));
              }),
              "The parameter " + message + ".");
}

}  // namespace
