// The decision functions of a model on CUDA.
#pragma once

#include <vector>

#include "platform/cuda/kernels/decision_kernels.h"
#include "platform/cuda/machine/device_samples.h"
#include "platform/cuda/machine/device_turns.h"
#include "platform/machine.h"

namespace zelsvm {

class CudaPredictor : public PredictorMachine, private SymbolUser {
 public:
  // Both outlive it.
  CudaPredictor(DeviceTurns& turns, LinearAlgebra& libraries, const DecisionTask& newTask);

  std::uint64_t blockSize(const zelmag::AbstractMatrix<double>& test) override;
  void decide(const zelmag::AbstractMatrix<double>& test, std::uint64_t first, std::uint64_t count,
              double* target) override;

 private:
  void publish() override;
  [[nodiscard]] std::uint64_t classCount() const { return task.classStarts.size() - 1; }
  [[nodiscard]] std::uint64_t functionCount() const { return task.rho.size(); }
  [[nodiscard]] std::uint64_t vectorCount() const { return task.vectors->rows(); }
  const double* pairCoefficients(std::uint64_t a, std::uint64_t b);
  void addUp(std::uint64_t function, const double* weights, std::uint64_t count);

  DecisionTask task;
  DecisionValueKernel kernel;
  unsigned parts;  // sums per sample
  std::uint64_t pitch;
  std::unique_ptr<DeviceSamples> vectors;
  zel::DeviceVector<double> vectorNorms;
  zel::DeviceVector<double> columns;       // of coefficients, one per other class
  zel::DeviceVector<double> coefficients;  // those of one pair of classes
  DenseRows testRows;
  zel::DeviceVector<double> testNorms;
  zel::DeviceVector<double> products;
  zel::DeviceVector<double> partials;
  zel::DeviceVector<double> values;
};

}  // namespace zelsvm
