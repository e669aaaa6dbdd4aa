// What runs before a two-class, one-class or regression problem is trained.
#pragma once

#include <cstdint>
#include <memory>

#include "data/svm_data.h"
#include "model/generic_model.h"
#include "parameters/svm_context.h"

namespace zelsvm {

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

}  // namespace zelsvm
