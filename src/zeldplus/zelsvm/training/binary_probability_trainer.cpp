#include "zeldplus/zelsvm/training/binary_probability_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
void BinaryProbabilityTrainer<T>::build(GenericModel<T>& model, SvmData<T>& data) {
  const HostVector<T> decisionValues = outOfFoldValues(*context, data, &resolver);
  model.sigmoids.emplace(data.labelPair(), sigmoidFit.fit(decisionValues, data));
}

template class BinaryProbabilityTrainer<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
