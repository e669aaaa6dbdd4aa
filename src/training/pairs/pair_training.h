// The label pairs of a one-against-one training, several at a time where the platform sees fit.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/output/console.h"
#include "training/build_handler.h"
#include "training/classifier.h"
#include "training/pairs/multiclass_definition.h"

namespace zelsvm {

// Solutions, messages and their order, random numbers and the failure thrown are those of pairs
// that are trained one after the other. Side by side, each member has a solver of its own and takes
// the next pair when it is done with one; messages are held back until it is their pair's turn, and
// written by the calling thread, which also shows the progress of its own pairs. When a pair fails
// no further pair is begun. Those that are left are trained one after the other, the failed one
// first: it fails again unless the others had left it too little memory. A failure of the sink, or
// its wish to stop, ends everything.
template <typename T>
class PairTraining {
 public:
  // classifier trains pairs alone; all must outlive this object.
  PairTraining(const SvmContext<T>& context, AbstractClassifier<T>& classifier,
               const std::vector<AbstractBuildHandler<T>*>& handlers,
               MulticlassDefinition<T>& pairs, GenericModel<T>& model)
      : context(&context),
        classifier(&classifier),
        handlers(&handlers),
        pairs(&pairs),
        model(&model) {}

  // Leaves every pair's solution in the definition and what the handlers found in the model.
  void run();

 private:
  class Member;
  class PairSink;
  class MemberSink;

  struct Pair {
    unsigned seed = 0;  // where its random numbers begin
    bool isTrained = false;
    std::string messages;
  };

  // Gives each pair its random numbers.
  void deal();
  [[nodiscard]] unsigned membersWorthwhile() const;
  void trainSideBySide(unsigned members);
  // The first member is the calling thread's.
  void work(Member& member, zel::MessageSink& whole, bool isFirst);
  std::optional<std::uint64_t> nextPair();
  void takeSolution(std::uint64_t pair, SolvedProblem<T>&& solved);
  void finish(std::uint64_t pair, std::string&& messages, GenericModel<T>& found);
  void stop();
  std::optional<std::string> nextMessages();
  // Writes the messages of the pairs whose turn has come.
  void writeMessages();
  // For the first member: keeps what the sink has thrown or why it has stopped; nobody trains on.
  void abandon();

  const SvmContext<T>* context;
  AbstractClassifier<T>* classifier;
  const std::vector<AbstractBuildHandler<T>*>* handlers;
  MulticlassDefinition<T>* pairs;
  GenericModel<T>* model;
  unsigned lastSeed = 0;  // behind all pairs

  std::mutex lock;  // of what follows while members work
  std::vector<Pair> states;
  std::uint64_t next = 0;                     // the first pair that nobody has taken
  std::uint64_t written = 0;                  // pairs whose messages are out
  std::exception_ptr failure;                 // of the sink
  const zel::StopScope* wholeStop = nullptr;  // of the calling thread

  std::atomic<std::uint64_t> done = 0;  // pairs trained
  std::atomic<bool> isAbandoned = false;
};

}  // namespace zelsvm
