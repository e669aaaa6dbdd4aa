#include "zeldplus/zelsvm/model/binary_decision_resolver.h"

#include <cstdint>

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
void BinaryDecisionResolver<T>::handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                                       const GenericModel<T>& /*model*/) {
  for (std::uint64_t i = 0; i < decisionValues.size(); ++i) output.set(i, decisionValues[i]);
}

template class BinaryDecisionResolver<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
