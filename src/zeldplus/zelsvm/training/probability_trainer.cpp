#include "zeldplus/zelsvm/training/probability_trainer.h"

#include "zeldplus/zelsvm/training/cross_trainer.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
HostVector<T> outOfFoldValues(const SvmContext<T>& context, SvmData<T>& data,
                              AbstractPredictionHandler<T>* resolver) {
  constexpr std::uint64_t folds = 5;
  HostVector<T> values(data.sampleCount());
  values.fill(0);
  SvmCrossTrainer<T> crossTrainer(context);
  if (resolver != nullptr) crossTrainer.addPredictionHandler(*resolver);
  crossTrainer.run(values, data, folds);
  return values;
}

template HostVector<double> outOfFoldValues(const SvmContext<double>&, SvmData<double>&,
                                            AbstractPredictionHandler<double>*);

}  // namespace zelsvm::inline ZEL_PLATFORM
