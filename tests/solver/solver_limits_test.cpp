// How solves end: at once, at the iteration limit, with a refusal, without memory.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "base/errors.h"
#include "support/allocation_fault.h"
#include "support/pair_machine.h"
#include "support/quiet.h"
#include "support/solved_problem.h"
#include "support/temp_file.h"
#include "support/tested_machine.h"
#include "text_match.h"

namespace {

using zelsvm::SvmContext;
using zelsvm::SvmParameters;
using zeltest::classSamples;
using zeltest::failureOf;
using zeltest::Quiet;
using zeltest::Samples;
using zeltest::targetSamples;
using zeltest::train;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr const char* noStep = "Failed to optimize the svm.";
constexpr const char* noNu = "Error: there is no feasible solution for the nu value.";

TEST(SolverLimits, IterationsEndExactlyAtTheLimit) {
  const Quiet quiet;
  const Samples samples = classSamples(40, 3, {0, 1}, 1);
  SvmParameters parameters{.C = 100, .eps = 1e-12};
  for (const std::uint64_t limit : {1, 40, 41, 81}) {
    parameters.maxIterations = limit;
    EXPECT_EQ(train(samples, parameters).text,
              "\nFailed to reach optimization in " + std::to_string(limit) + " iterations\n\n\n");
  }
  parameters.eps = 1e-3;
  parameters.maxIterations = 0;
  EXPECT_TRUE(zeltest::matches(train(samples, parameters).text,
                               "\nFinished optimization in [0-9]+ iterations\n\n\n"));
}

TEST(SolverLimits, LargeBatchesHoldAThousandIterations) {
  const std::string text =
      train(classSamples(1500, 3, {0, 1}, 1), {.C = 100, .eps = 1e-12, .maxIterations = 1001},
            zeltest::pairMachine())
          .text;
  EXPECT_EQ(text.substr(0, text.find("nu")),  // a dot for each batch
            "..\nFailed to reach optimization in 1001 iterations\n\n\n");
}

// Equal samples: any distribution of the multipliers is optimal, and the check alone is counted.
TEST(SolverLimits, AnOptimalStartTakesOneIteration) {
  const std::string text = train({1, {2, 2}, {1, 1}}, {.svmType = zelsvm::SVM_TYPE_ONE_CLASS}).text;
  EXPECT_NE(text.find("Finished optimization in 1 iterations\n"), std::string::npos) << text;
}

TEST(SolverLimits, DotsOfTheFirstGradientAreAlwaysPrinted) {
  const Quiet quiet;
  // 16 slots: the 40 samples' columns take 3 blocks, and again for the second half.
  const SvmParameters parameters{.svmType = zelsvm::SVM_TYPE_NU_REGRESSION, .cacheSize = 0};
  EXPECT_TRUE(zeltest::matches(train(targetSamples(40, 3, 1), parameters).text,
                               "[.]{6}\nFinished optimization in [0-9]+ iterations\n\n\n"));
}

TEST(SolverLimits, RefusesProblemsWithoutASolution) {
  const Samples targets{1, {0, 1, 2}, {0.05, -0.05, 0}};
  EXPECT_EQ(failureOf([&] {
              train(targets, {.svmType = zelsvm::SVM_TYPE_EPSILON_REGRESSION, .p = 0.1});
            }),
            "Unable to create support vectors.");
  const Samples few = classSamples(20, 2, {1, 2, 2, 2, 2, 2, 2, 2, 2, 2}, 1);
  EXPECT_EQ(failureOf<zel::AppException>(
                [&] { train(few, {.svmType = zelsvm::SVM_TYPE_NU_CLASSIFICATION, .nu = 0.9}); }),
            noNu);
  EXPECT_EQ(failureOf<zel::AppException>(
                [&] { train(few, {.svmType = zelsvm::SVM_TYPE_ONE_CLASS, .nu = 1}); }),
            noStep);
  EXPECT_EQ(failureOf<zel::AppException>([&] { train(few, {.C = nan}); }),
            "Invalid regularization/weight constants.");
}

TEST(SolverLimits, RefusesAClassificationOfOneSign) {
  SvmContext<double> context({}, zelsvm::ParameterChecks::training, zeltest::testedMachine());
  zeltest::DataSet set(classSamples(20, 2, {1}, 1), context);
  set.data().defineLabelPair({1, 2});
  zelsvm::GenericModel<double> model;
  EXPECT_EQ(failureOf<zel::AppException>([&] { train(context, set.data(), model); }), noStep);
}

TEST(SolverLimits, NumbersThatDoNotCompareEndWithASentence) {
  for (const bool sparse : {true, false})
    for (const int kernel : zeltest::allKernels)
      for (const int type : zeltest::allTypes) {
        SCOPED_TRACE(std::to_string(type) + " with kernel " + std::to_string(kernel));
        Samples samples = zeltest::samplesFor(type, 30, 3, 1);
        for (std::uint64_t i = 0; i < 30; ++i) samples.values[3 * i] = nan;
        const SvmParameters parameters{.svmType = type, .kernelType = kernel, .sparse = sparse};
        const std::string failure =
            failureOf<zel::AppException>([&] { train(samples, parameters); });
        // A nu-regression starts with multipliers that cancel: a machine may leave them out of the
        // first gradient, and meets the numbers in its first step.
        const bool metLater = type == int{zelsvm::SVM_TYPE_NU_REGRESSION} && failure == noStep;
        EXPECT_EQ(failure, zeltest::isNu(type) && !metLater ? noNu : noStep);
      }
}

// One bad sample among good ones: the solve ends, whatever it finds.
TEST(SolverLimits, ASingleBadSampleDoesNotKeepASolveRunning) {
  for (const double bad : {nan, std::numeric_limits<double>::infinity(), 1e200})
    for (const int type : zeltest::allTypes)
      for (const std::uint64_t where : {0, 13, 29}) {
        Samples samples = zeltest::samplesFor(type, 30, 3, 1);
        samples.values[3 * where] = bad;
        const std::string failure = failureOf<zel::AppException>([&] {
          const auto text = train(samples, {.svmType = type,
                                            .kernelType = zelsvm::SVM_KERNEL_LINEAR,
                                            .maxIterations = 3000})
                                .text;
          EXPECT_NE(text.find(" optimization in "), std::string::npos);
        });
        EXPECT_TRUE(failure.empty() || failure == noStep || failure == noNu) << failure;
      }
}

// Memory may run out at any allocation; the next training works all the same.
template <typename Trainer, typename Solver>
void starve(int svmType) {
  zeltest::Trainings<Trainer, Solver> trainings({.svmType = svmType});
  const Samples samples = zeltest::samplesFor(svmType, 30, 3, 1);
  const auto run = [&] { trainings.run(samples); };
  std::uint64_t failures = 0;
  const auto starved = [&] {
    const zeltest::AllocationFault fault(failures + 1, zeltest::FaultExtent::fromThenOn);
    return failureOf(run);
  };
  // What a failed training allocated stays, so that the next one gets further.
  std::string failure;
  int tries = 0;
  while (tries++ < 100 && !(failure = starved()).empty()) {
    EXPECT_NE(failure.find("memory"), std::string::npos) << failure;
    failures += tries % 2 == 0;
  }
  EXPECT_GT(tries, 6);
  ASSERT_TRUE(failure.empty());
  run();
  EXPECT_EQ(trainings.problems()[1].alpha, trainings.problems()[0].alpha);
  EXPECT_EQ(trainings.problems()[1].alpha, train(samples, {.svmType = svmType}).only().alpha);
}

TEST(SolverLimits, SurvivesFailingAllocations) {
  starve<zelsvm::CoreSvmClassifier<double>, zelsvm::SmoCoreSolver<double>>(
      zelsvm::SVM_TYPE_C_CLASSIFICATION);
  starve<zelsvm::NuSvmRegressor<double>, zelsvm::SmoNuSolver<double>>(
      zelsvm::SVM_TYPE_NU_REGRESSION);
}

}  // namespace
