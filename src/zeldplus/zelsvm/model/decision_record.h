// Decision values kept for whoever wants to see them.
#pragma once

#include "zeldplus/zelsvm/model/prediction_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class DecisionRecord : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& /*output*/, const HostVector<T>& decisionValues,
              const GenericModel<T>& /*model*/) override {
    values.resize(decisionValues.size());
    values.copyFrom(decisionValues, 0, 0, decisionValues.size());
  }

  HostVector<T> values;  // of the last prediction, as handlers are given them
};

}  // namespace zelsvm::inline ZEL_PLATFORM
