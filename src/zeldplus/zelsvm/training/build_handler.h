// What runs before a two-class, one-class or regression problem is trained.
#pragma once

#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/model/generic_model.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class AbstractBuildHandler {
 public:
  virtual ~AbstractBuildHandler() = default;
  virtual void build(GenericModel<T>& model, SvmData<T>& data) = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
