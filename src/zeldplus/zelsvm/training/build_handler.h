// What runs before a two-class, one-class or regression problem is trained.
#pragma once

#include <cstdint>
#include <memory>

#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/generic_model.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class AbstractBuildHandler {
 public:
  virtual ~AbstractBuildHandler() = default;
  virtual void build(GenericModel<T>& model, SvmData<T>& data) = 0;
  // One of the same kind, for problems that another thread trains. The context must outlive it.
  [[nodiscard]] virtual std::unique_ptr<AbstractBuildHandler> sibling(
      const SvmContext<T>& context) const = 0;
  // How many random numbers build() draws for a problem of so many samples.
  [[nodiscard]] virtual std::uint64_t randomNumbers(std::uint64_t samples) const = 0;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
