// Label pairs that threads train side by side, and trainings that threads run side by side.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "base/output/console.h"
#include "base/random.h"
#include "runs/processor.h"
#include "support/allocation_fault.h"
#include "support/host_vectors.h"
#include "support/samples.h"
#include "support/tested_machine.h"
#include "support/thread_limit.h"
#include "threads/parallel.h"

namespace {

using zelsvm::SvmParameters;
using zeltest::Samples;
using zeltest::ThreadLimit;

// All that a training leaves behind.
struct Outcome {
  std::vector<double> rho;
  std::vector<double> coefficients;
  std::vector<double> sigmoids;
  std::string text;
  int nextRandom;
  bool operator==(const Outcome&) const = default;
};

class TextSink : public zel::MessageSink {
 public:
  using MessageSink::MessageSink;
  void write(std::string_view piece) override { text += piece; }
  std::string text;
};

Outcome train(const Samples& samples, const SvmParameters& parameters, TextSink& sink) {
  const zel::SinkScope scope(sink);
  zel::seedRandom(3);
  zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                     zeltest::testedMachine());
  zeltest::DataSet set(samples, context);
  zelsvm::GenericModel<double> model;
  zelsvm::GenericProcessor<double>(context).train(model, set.data(), true);
  std::vector<double> sigmoids;
  for (const auto& [pair, sigmoid] : model.sigmoids)
    sigmoids.insert(sigmoids.end(), {pair.first, pair.second, sigmoid.A, sigmoid.B});
  return {zeltest::valuesOf(model.rho()), zeltest::valuesOf(model.coefficients()), sigmoids,
          sink.text, zel::nextRandom()};
}

Outcome train(const Samples& samples, const SvmParameters& parameters) {
  TextSink sink(true);
  return train(samples, parameters, sink);
}

Samples tenClasses(unsigned seed) {
  return zeltest::classSamples(1000, 10, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, seed);
}

TEST(PairThreads, GiveTheOutcomeOfOne) {
  for (const SvmParameters& parameters :
       {SvmParameters{.C = 10},
        {.svmType = zelsvm::SVM_TYPE_NU_CLASSIFICATION, .nu = 0.3, .sparse = false}}) {
    Outcome outcomes[2];
    for (const int threads : {1, 2}) {
      const ThreadLimit limit(threads);
      outcomes[threads - 1] = train(tenClasses(1), parameters);
    }
    EXPECT_EQ(outcomes[0].sigmoids.size(), 4 * 45);
    EXPECT_TRUE(outcomes[1] == outcomes[0]);
  }
}

class WatchingSink : public TextSink {
 public:
  explicit WatchingSink(std::uint64_t stopAt) : TextSink(true), stopAt(stopAt) {}
  bool wantsProgress() override { return true; }
  void showProgress(const zel::SolveProgress& progress) override {
    EXPECT_EQ(std::this_thread::get_id(), watching);
    EXPECT_EQ(progress.pairs, 45u);
    EXPECT_GE(progress.pairsDone, done);
    done = progress.pairsDone;
    if (done >= stopAt) throw std::string("enough");
  }

  std::uint64_t done = 0;

 private:
  std::thread::id watching = std::this_thread::get_id();
  std::uint64_t stopAt;
};

// Also side by side, on the thread that watches; what it throws ends the training.
TEST(PairThreads, ShowProgress) {
  for (const int threads : {1, 2}) {
    const ThreadLimit limit(threads);
    WatchingSink all(45);
    EXPECT_TRUE(train(tenClasses(1), {.C = 10}, all) == train(tenClasses(1), {.C = 10}));
    EXPECT_GT(all.done, 30u);
    WatchingSink some(20);
    EXPECT_THROW(train(tenClasses(1), {.C = 10}, some), std::string);
    EXPECT_LT(some.done, 25u);
  }
}

// Ends where it is asked to, on whichever thread that is seen.
class StoppingSink : public TextSink {
 public:
  explicit StoppingSink(int questions) : TextSink(true), left(questions) {}
  bool isStopped() override { return --left < 0; }

 private:
  int left;
};

TEST(PairThreads, EndWhenTheSinkStopsThem) {
  for (const int threads : {1, 2}) {
    const ThreadLimit limit(threads);
    for (const int questions : {0, 20}) {
      StoppingSink sink(questions);
      EXPECT_THROW(train(tenClasses(1), {.C = 10}, sink), zel::Stopped);
    }
  }
}

// A pair for which there was no memory beside others is trained alone.
TEST(PairThreads, MakeDoWithLittleMemory) {
  if (zel::threadCount() < 2) GTEST_SKIP() << "one processor trains pairs one after the other";
  const ThreadLimit limit(2);
  const Outcome expected = train(tenClasses(1), {.C = 10});
  for (const std::uint64_t nth : {60, 100, 300, 2000}) {
    const zeltest::AllocationFault fault(nth);
    EXPECT_TRUE(train(tenClasses(1), {.C = 10}) == expected) << nth;
  }
}

TEST(TrainingThreads, ShareNothing) {
  Outcome expected[2];
  Outcome outcomes[2];
  for (const unsigned i : {0u, 1u}) expected[i] = train(tenClasses(i), {.C = 10});
  std::thread other([&] { outcomes[0] = train(tenClasses(0), {.C = 10}); });
  outcomes[1] = train(tenClasses(1), {.C = 10});
  other.join();
  for (const int i : {0, 1}) EXPECT_TRUE(outcomes[i] == expected[i]);
}

}  // namespace
