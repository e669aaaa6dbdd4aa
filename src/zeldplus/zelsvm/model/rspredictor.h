// Decision values f(x) = sum_k c_k K(s_k, x) - rho of test samples, on the device.
#pragma once

#include <cstdint>
#include <vector>

#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/svm_context.h"
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
  void predictPairs(HostVector<T>& output, zelmag::AbstractMatrix<T>& test);
  void computeDecisionValues(HostVector<T>& output, zelmag::AbstractMatrix<T>& test,
                             const HostVector<T>& functionCoefficients, T rho);
  void launchDecisionValues(std::uint64_t count);

  const SvmContext<T>* params;
  const GenericModel<T>* model;
  std::vector<AbstractPredictionHandler<T>*> handlers;
  zelmag::AbstractMatrix<T>* vectors;
  std::uint64_t svCount;
  std::uint64_t pitch;
  std::uint64_t blockSize = 0;  // test samples per pass
  unsigned parts = 0;           // partial sums per test sample
  zel::DeviceVector<T> coefficients;
  zel::DeviceVector<T> svNorms;
  zel::DeviceVector<T> partials;
  zel::DeviceVector<T> products;
  zel::DeviceVector<T> testNorms;
  zel::DeviceVector<T> outputs;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
