#include "training/pairs/pair_training.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "base/output/console.h"
#include "base/random.h"
#include "threads/parallel.h"
#include "training/generic_trainer.h"

namespace zelsvm {
// Between a pair's training and the sink of all: adds to its progress how many pairs are done.
template <typename T>
class PairTraining<T>::PairSink : public zel::MessageSink {
 public:
  PairSink(PairTraining& training, zel::MessageSink& whole)
      : MessageSink(whole.verbose), training(&training), whole(&whole) {}

  void write(std::string_view text) override { whole->write(text); }
  bool isStopped() override { return whole->isStopped(); }
  bool wantsProgress() override { return whole->wantsProgress(); }
  void showProgress(const zel::SolveProgress& progress) override {
    zel::SolveProgress shown = progress;
    shown.pairs = training->states.size();
    shown.pairsDone = training->done;
    whole->showProgress(shown);
  }

 protected:
  PairTraining* training;

 private:
  zel::MessageSink* whole;
};

// The same beside other members: holds messages back, and shows progress on the calling thread
// only.
template <typename T>
class PairTraining<T>::MemberSink : public PairSink {
 public:
  MemberSink(PairTraining& training, zel::MessageSink& whole, bool isFirst)
      : PairSink(training, whole), isFirst(isFirst) {}

  void write(std::string_view piece) override { text += piece; }
  bool isStopped() override {
    return this->training->isAbandoned || (isFirst && PairSink::isStopped());
  }
  bool wantsProgress() override { return isFirst && PairSink::wantsProgress(); }
  void showProgress(const zel::SolveProgress& progress) override try {
    PairSink::showProgress(progress);
  } catch (...) {
    this->training->abandon();
    throw;
  }

  [[nodiscard]] const std::atomic<bool>& abandoned() const { return this->training->isAbandoned; }
  [[nodiscard]] const zel::StopScope* wholeStop() const { return this->training->wholeStop; }

  std::string text;

 private:
  bool isFirst;
};

// What a thread needs to train pairs beside others.
template <typename T>
class PairTraining<T>::Member {
 public:
  Member(const SvmContext<T>& whole, unsigned members,
         const std::vector<AbstractBuildHandler<T>*>& handlers)
      : context(whole, members), trainer(context) {
    for (const auto* handler : handlers) {
      siblings.push_back(handler->sibling(context));
      trainer.addHandler(*siblings.back());
    }
  }

  // Null when that fails.
  static std::unique_ptr<Member> make(
      const SvmContext<T>& whole, unsigned members,
      const std::vector<AbstractBuildHandler<T>*>& handlers) noexcept try {
    return std::make_unique<Member>(whole, members, handlers);
  } catch (...) {
    return nullptr;
  }

  // What the handlers find goes into found.
  SolvedProblem<T> solve(SvmData<T>&& data, unsigned seed, MemberSink& sink) {
    const zel::SinkScope scope(sink);
    const zel::StopScope stop(sink.abandoned(), sink.wholeStop());
    zel::seedRandom(seed);
    return trainer.solveTwoClass(found, data);
  }

  GenericModel<T> found;

 private:
  SvmContext<T> context;
  GenericTrainer<T> trainer;
  std::vector<std::unique_ptr<AbstractBuildHandler<T>>> siblings;
};

template <typename T>
void PairTraining<T>::run() {
  deal();
  const unsigned members = membersWorthwhile();
  if (members > 1) trainSideBySide(members);
  PairSink sink(*this, zel::currentSink());
  const zel::SinkScope scope(sink);
  for (std::uint64_t pair = written; pair < states.size(); ++pair) {
    if (states[pair].isTrained) {
      zel::writeMessage(states[pair].messages);
    } else {
      zel::seedRandom(states[pair].seed);
      auto data = pairs->problem(pair);
      takeSolution(pair, classifier->solveTwoClass(*model, data));
      ++done;
    }
  }
  zel::seedRandom(lastSeed);
}

template <typename T>
void PairTraining<T>::deal() {
  lastSeed = zel::randomSeedHere();
  states.resize(pairs->pairCount());
  for (std::uint64_t pair = 0; pair < states.size(); ++pair) {
    states[pair].seed = lastSeed;
    for (const auto* handler : *handlers)
      lastSeed = zel::seedBehind(lastSeed, handler->randomNumbers(pairs->sampleCount(pair)));
  }
}

template <typename T>
unsigned PairTraining<T>::membersWorthwhile() const {
  PairLoad load;
  load.pairs = pairs->pairCount();
  for (std::uint64_t pair = 0; pair < load.pairs; ++pair) {
    const std::uint64_t samples = pairs->sampleCount(pair);
    load.largest = std::max(load.largest, samples);
    load.kernelValues += static_cast<double>(samples) * static_cast<double>(samples);
  }
  // Those of C-classifications begin at zero unless they continue others.
  load.sumsStartGradient = context->svmType == SVM_TYPE_NU_CLASSIFICATION || pairs->hasStart();
  return context->machine.solversAtOnce(pairs->matrix(),
                                        context->kernelSettings(pairs->matrix().features().count()),
                                        context->cacheSize, load);
}

template <typename T>
void PairTraining<T>::takeSolution(std::uint64_t pair, SolvedProblem<T>&& solved) {
  pairs->takeSolution(pair, std::move(solved.problem.alpha), solved.solution);
}

template <typename T>
void PairTraining<T>::trainSideBySide(unsigned members) {
  zel::MessageSink& whole = zel::currentSink();
  wholeStop = zel::StopScope::current();
  zel::runCrew(static_cast<int>(members), [&](int number) {
    // Where memory is short of a member the others do its work.
    const std::unique_ptr<Member> member = Member::make(*context, members, *handlers);
    if (member) work(*member, whole, number == 0);
  });
  if (failure) std::rethrow_exception(failure);
}

template <typename T>
void PairTraining<T>::work(Member& member, zel::MessageSink& whole, bool isFirst) {
  while (const auto pair = nextPair()) {
    try {
      MemberSink sink(*this, whole, isFirst);
      takeSolution(*pair, member.solve(pairs->problem(*pair), states[*pair].seed, sink));
      finish(*pair, std::move(sink.text), member.found);
    } catch (const zel::Stopped&) {
      if (isFirst) abandon();
      return stop();
    } catch (...) {
      // What was thrown comes again when the pair is trained alone.
      return stop();
    }
    if (isFirst) writeMessages();
  }
}

template <typename T>
std::optional<std::uint64_t> PairTraining<T>::nextPair() {
  const std::scoped_lock locked(lock);
  if (next == states.size()) return {};
  return next++;
}

template <typename T>
void PairTraining<T>::finish(std::uint64_t pair, std::string&& messages, GenericModel<T>& found) {
  const std::scoped_lock locked(lock);
  states[pair].messages = std::move(messages);
  states[pair].isTrained = true;
  ++done;
  model->sigmoids.merge(found.sigmoids);
}

template <typename T>
void PairTraining<T>::stop() {
  const std::scoped_lock locked(lock);
  next = states.size();
}

template <typename T>
std::optional<std::string> PairTraining<T>::nextMessages() {
  const std::scoped_lock locked(lock);
  if (written == states.size() || !states[written].isTrained) return {};
  return std::move(states[written++].messages);
}

template <typename T>
void PairTraining<T>::writeMessages() try {
  while (const auto messages = nextMessages()) zel::writeMessage(*messages);
} catch (...) {
  abandon();
}

template <typename T>
void PairTraining<T>::abandon() {
  failure = std::current_exception();
  isAbandoned = true;
  stop();
}

template class PairTraining<double>;

}  // namespace zelsvm
