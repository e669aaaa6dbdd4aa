#include "zeldplus/zelsvm/training/generic_trainer.h"

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/engine/smo_core_solver.h"
#include "zeldplus/zelsvm/engine/smo_nu_solver.h"
#include "zeldplus/zelsvm/training/classifier.h"
#include "zeldplus/zelsvm/training/one_class_svm.h"
#include "zeldplus/zelsvm/training/regressor.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
GenericTrainer<T>::GenericTrainer(const SvmContext<T>& context) {
  const auto make = [&]<typename Trainer, typename Solver>() {
    solver = std::make_unique<Solver>(context);
    trainer = std::make_unique<Trainer>(context, *solver);
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

}  // namespace zelsvm::inline ZEL_PLATFORM
