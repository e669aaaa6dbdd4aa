// One-against-one voting. Knerr, Personnaz and Dreyfus, "Single-layer learning revisited" (1990).
#pragma once

#include "zeldplus/zelsvm/model/prediction_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Writes the label with the most votes, the earliest in model order where several have as many. A
// decision value of 0 is no vote; a sample without any vote keeps its prediction.
template <typename T>
class MulticlassResolver : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
