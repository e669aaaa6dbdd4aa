#include "zeldplus/zelsvm/training/generic_probability_trainer.h"

#include "zeldplus/zelsvm/training/binary_probability_trainer.h"
#include "zeldplus/zelsvm/training/numeric_probability_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
GenericProbabilityTrainer<T>::GenericProbabilityTrainer(const SvmContext<T>& context) {
  if (context.problemKind == ProblemKind::regression)
    trainer = std::make_unique<NumericProbabilityTrainer<T>>(context);
  else
    trainer = std::make_unique<BinaryProbabilityTrainer<T>>(context);
}

template class GenericProbabilityTrainer<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
