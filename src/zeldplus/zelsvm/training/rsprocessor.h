// Training and prediction with one parameter record.
#pragma once

#include <memory>

#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/evaluation_handler.h"
#include "zeldplus/zelsvm/model/generic_model.h"
#include "zeldplus/zelsvm/model/multiclass_resolver.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class GenericProcessor {
 public:
  // The context must outlive it.
  explicit GenericProcessor(const SvmContext<T>& context) : context(&context) {}
  virtual ~GenericProcessor() = default;

  // Fills the empty model, whose scale record is set. Classification labels are truncated in place.
  // Throws AppException for labels or parameters that cannot be trained.
  void train(GenericModel<T>& model, SimpleData<T>& data, bool probability);

  // Writes one prediction per sample of data, in scaled units, and evaluates them against its
  // labels.
  void predict(HostVector<T>& output, const GenericModel<T>& model, SvmData<T>& data,
               bool probability);

  // Measures of the last prediction.
  [[nodiscard]] const AbstractEvaluator<T>& evaluator() const { return evaluation->evaluator(); }

 private:
  const SvmContext<T>* context;
  std::unique_ptr<GenericEvaluationHandler<T>> evaluation;
  MulticlassResolver<T> resolver;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
