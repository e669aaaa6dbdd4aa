// Predictors of a model that is asked again and again.
#pragma once

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/machine.h"

namespace zelsvm {

// What a predictor has laid out stays with it, so that the next call need not do so again. As many
// are kept as were in use at the same time. Threads may call at once.
class PredictorPool {
 public:
  // Calls use(predictor) with a predictor that nobody else has, made by make() where all are in
  // use. One whose use ends by an exception is not kept.
  template <typename Make, typename Use>
  auto with(const Make& make, const Use& use) {
    std::unique_ptr<PredictorMachine> predictor = take();
    if (!predictor) predictor = make();
    auto result = use(*predictor);
    giveBack(std::move(predictor));
    return result;
  }

 private:
  std::unique_ptr<PredictorMachine> take() {
    const std::scoped_lock locked(lock);
    if (idle.empty()) return nullptr;
    std::unique_ptr<PredictorMachine> last = std::move(idle.back());
    idle.pop_back();
    return last;
  }
  void giveBack(std::unique_ptr<PredictorMachine> predictor) {
    const std::scoped_lock locked(lock);
    idle.push_back(std::move(predictor));
  }

  std::mutex lock;
  std::vector<std::unique_ptr<PredictorMachine>> idle;
};

}  // namespace zelsvm
