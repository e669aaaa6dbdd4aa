// Decision values f(x) = sum_k c_k K(s_k, x) - rho of test samples, on the device.
#pragma once

#include <cstdint>
#include <vector>

#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/decision_functions.h"
#include "zeldplus/zelsvm/model/prediction_handler.h"

namespace zelsvm::inline ZEL_PLATFORM {

// Writes the device context when it is built: build it after any training, and predict before the
// next.
template <typename T>
class GenericPredictor {
 public:
  // Both must outlive it. Throws AppException for a model without rho or support vectors.
  GenericPredictor(const SvmContext<T>& params, const GenericModel<T>& model);
  virtual ~GenericPredictor() = default;

  // Called in order with the output vector and the decision values; not owned.
  void addHandler(AbstractPredictionHandler<T>& handler) { handlers.push_back(&handler); }

  // output has one entry per test sample; the test matrix has at least the support vectors'
  // columns.
  void predict(HostVector<T>& output, zelmag::AbstractMatrix<T>& test);

 private:
  void publishConstants() const;
  void size(const zelmag::AbstractMatrix<T>& test);
  // Calls take(first sample, count) with each block's decision values in values.
  template <typename Take>
  void forEachBlock(zelmag::AbstractMatrix<T>& test, Take take);
  void predictPairs(HostVector<T>& output, zelmag::AbstractMatrix<T>& test);

  const SvmContext<T>* params;
  const GenericModel<T>* model;
  std::vector<AbstractPredictionHandler<T>*> handlers;
  zelmag::AbstractMatrix<T>* vectors;
  std::uint64_t pitch;
  std::uint64_t blockSize = 0;  // test samples per pass
  DecisionFunctions<T> functions;
  zel::DeviceVector<T> products;
  zel::DeviceVector<T> testNorms;
  zel::DeviceVector<T> values;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
