#include "zeldplus/zelsvm/training/pair_training.h"

#include <cuda_runtime.h>

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zelrandom.h"
#include "zeldplus/zelsvm/training/generic_trainer.h"
#include "zeldplus/zelsvm/training/pair_schedule.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

class TextSink : public zel::MessageSink {
 public:
  using MessageSink::MessageSink;
  void write(std::string_view piece) override { text += piece; }

  std::string text;
};

}  // namespace

// What a thread needs to train pairs beside others.
template <typename T>
class PairTraining<T>::Member {
 public:
  Member(const SvmContext<T>& whole, unsigned members,
         const std::vector<AbstractBuildHandler<T>*>& handlers, bool verbose)
      : context(whole, members), trainer(context), verbose(verbose) {
    for (const auto* handler : handlers) {
      siblings.push_back(handler->sibling(context));
      trainer.addHandler(*siblings.back());
    }
  }

  // Null when that fails.
  static std::unique_ptr<Member> make(const SvmContext<T>& whole, unsigned members,
                                      const std::vector<AbstractBuildHandler<T>*>& handlers,
                                      bool verbose) noexcept try {
    return std::make_unique<Member>(whole, members, handlers, verbose);
  } catch (...) {
    cudaGetLastError();  // or the thread's next launch would report the failure
    return nullptr;
  }

  // Returns the messages; what the handlers find goes into found.
  std::string train(SvmData<T>& data, unsigned seed) {
    TextSink sink(verbose);
    const zel::SinkScope scope(sink);
    zel::seedRandom(seed);
    trainer.train(found, data);
    return std::move(sink.text);
  }

  GenericModel<T> found;

 private:
  SvmContext<T> context;
  GenericTrainer<T> trainer;
  std::vector<std::unique_ptr<AbstractBuildHandler<T>>> siblings;
  bool verbose;
};

template <typename T>
void PairTraining<T>::run() {
  deal();
  const unsigned members = membersWorthwhile();
  if (members > 1) trainSideBySide(members);
  for (std::uint64_t pair = written; pair < states.size(); ++pair) {
    if (states[pair].isTrained) {
      zel::writeMessage(states[pair].messages);
    } else {
      zel::seedRandom(states[pair].seed);
      trainer->train(*model, pairs->makeView(pair));
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
  return pairsAtOnce(*context, pairs->matrix(), load);
}

template <typename T>
void PairTraining<T>::trainSideBySide(unsigned members) {
  const bool verbose = zel::isVerbose();
  runMembers(members, [&](unsigned number) {
    // Where memory is short of a member the others do its work.
    const std::unique_ptr<Member> member = Member::make(*context, members, *handlers, verbose);
    if (member) work(*member, number == 0);
  });
  if (failure) std::rethrow_exception(failure);
}

template <typename T>
void PairTraining<T>::work(Member& member, bool writes) {
  while (const auto pair = nextPair()) {
    try {
      finish(*pair, member.train(pairs->makeView(*pair), states[*pair].seed), member.found);
    } catch (...) {
      // What was thrown comes again when the pair is trained alone.
      cudaGetLastError();
      return stop();
    }
    if (writes) writeMessages();
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
  failure = std::current_exception();
  stop();
}

template class PairTraining<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
