// The test that keeps predictions from being made of decision values that are no numbers.
#pragma once

#include <cmath>
#include <cstdint>

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/model/prediction_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Changes nothing. Throws AppException naming the first test sample, counted from 1, with a
// decision value that is NaN; an infinite one still has a side.
template <typename T>
class DecisionCheck : public AbstractPredictionHandler<T> {
 public:
  void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
              const GenericModel<T>& /*model*/) override {
    for (std::uint64_t i = 0; i < decisionValues.size(); ++i)
      if (std::isnan(decisionValues[i]))
        zel::throwAppException("The decision value of sample %lu is not a number.",
                               i % output.size() + 1);
  }
};

}  // namespace zelsvm::inline ZEL_PLATFORM
