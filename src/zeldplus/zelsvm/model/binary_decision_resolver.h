// The decision values themselves as predictions.
#pragma once

#include "zeldplus/zelsvm/model/prediction_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

// For models of two labels.
template <typename T>
class BinaryDecisionResolver : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& model) override;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
