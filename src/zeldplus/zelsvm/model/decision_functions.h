// The decision functions of a model over blocks of test samples: all that follows the dot products.
#pragma once

#include <cstdint>

#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/svm_context.h"
#include "zeldplus/zelsvm/model/generic_model.h"

namespace zelsvm::inline ZEL_PLATFORM {

// One function per pair of labels, in pair order; one for regression. Reads the device context.
template <typename T>
class DecisionFunctions {
 public:
  // Both must outlive it. Throws AppException for a model without rho or support vectors.
  DecisionFunctions(const SvmContext<T>& params, const GenericModel<T>& model);

  [[nodiscard]] std::uint64_t count() const { return functionCount; }
  // Device memory that evaluate() takes per sample, beside its arguments.
  [[nodiscard]] std::uint64_t bytesPerSample() const;

  // values[f * samples + c] = sum_k c_k K(s_k, x_c) - rho of function f and the block's sample c.
  // Column c of products, leading dimension pitch, holds the sample's dot products with the support
  // vectors and may be overwritten; testNorms holds the samples' squared norms.
  void evaluate(zel::DeviceVector<T>& values, zel::DeviceVector<T>& products, std::uint64_t pitch,
                const zel::DeviceVector<T>& testNorms, std::uint64_t samples);

 private:
  const SvmContext<T>* params;
  const GenericModel<T>* model;
  std::uint64_t svCount;
  std::uint64_t functionCount;
  zel::DeviceVector<T> svNorms;
  zel::DeviceVector<T> coefficients;  // host: the model's; device: those of one function
  zel::DeviceVector<T> partials;      // sums over some of the support vectors
};

}  // namespace zelsvm::inline ZEL_PLATFORM
