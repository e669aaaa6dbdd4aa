#include "training/generic_trainer.h"

#include <concepts>
#include <utility>

#include "base/errors.h"
#include "solver/smo_core_solver.h"
#include "solver/smo_nu_solver.h"
#include "training/one_class_svm.h"
#include "training/regressor.h"

namespace zelsvm {

template <typename T>
GenericTrainer<T>::GenericTrainer(const SvmContext<T>& context) {
  const auto make = [&]<typename Trainer, typename Solver>() {
    solver = std::make_unique<Solver>(context);
    auto made = std::make_unique<Trainer>(context, *solver);
    if constexpr (std::derived_from<Trainer, AbstractClassifier<T>>) classifier = made.get();
    trainer = std::move(made);
  };
  switch (context.svmType) {
    case SVM_TYPE_C_CLASSIFICATION:
      make.template operator()<CoreSvmClassifier<T>, SmoCoreSolver<T>>();
      break;
    case SVM_TYPE_NU_CLASSIFICATION:
      make.template operator()<NuSvmClassifier<T>, SmoNuSolver<T>>();
      break;
    case SVM_TYPE_ONE_CLASS:
      make.template operator()<OneClassSvm<T>, SmoCoreSolver<T>>();
      break;
    case SVM_TYPE_EPSILON_REGRESSION:
      make.template operator()<CoreSvmRegressor<T>, SmoCoreSolver<T>>();
      break;
    case SVM_TYPE_NU_REGRESSION:
      make.template operator()<NuSvmRegressor<T>, SmoNuSolver<T>>();
      break;
    case SVM_TYPE_UNSUPPORTED:
      throw zel::AppException("Unsupported SVM training algorithm");
  }
}

template class GenericTrainer<double>;

}  // namespace zelsvm
