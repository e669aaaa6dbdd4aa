// What happens with decision values once they are there.
#pragma once

#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/model/generic_model.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class AbstractPredictionHandler {
 public:
  virtual ~AbstractPredictionHandler() = default;

  // output holds n predictions, one per test sample. decisionValues holds n values per label pair,
  // pair after pair (a positive one favours the pair's first label); for regression it is output
  // itself.
  virtual void handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                      const GenericModel<T>& model) = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
