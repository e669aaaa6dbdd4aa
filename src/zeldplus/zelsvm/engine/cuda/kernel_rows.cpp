#include "zeldplus/zelsvm/engine/kernel_rows.h"

#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zellaunch.h"
#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/engine/kernel_kernels.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr unsigned blockSize = 128;

// One matrix-vector product and one launch per row.
template <typename T>
class DeviceKernelRows : public KernelRows<T> {
 public:
  void assign(zelmag::AbstractMatrix<T>& newSamples, SVM_KERNEL newKernelType,
              const T* /*norms*/) override {
    samples = &newSamples;
    kernelType = newKernelType;
  }

  [[nodiscard]] unsigned mostTogether() const override { return 1; }
  PairKernel* pairs() override { return nullptr; }

  void compute(const RowTarget<T>* rows, unsigned count) override {
    for (unsigned c = 0; c < count; ++c) {
      zel::DeviceVector<T> row(samples->rows(), rows[c].values);
      samples->rowProducts(row, rows[c].sample);
      if (kernelType == SVM_KERNEL_POLYNOMIAL) transform<SVM_KERNEL_POLYNOMIAL>(rows[c]);
      if (kernelType == SVM_KERNEL_RADIAL) transform<SVM_KERNEL_RADIAL>(rows[c]);
      if (kernelType == SVM_KERNEL_SIGMOID) transform<SVM_KERNEL_SIGMOID>(rows[c]);
    }
  }

 private:
  template <SVM_KERNEL K>
  void transform(const RowTarget<T>& row) {
    static const auto limit =
        static_cast<unsigned>(zel::residentBlocks(findSmoMatrixKernel<T, K>, blockSize, 0));
    const std::uint64_t n = samples->rows();
    zel::launch(findSmoMatrixKernel<T, K>, {zel::gridSize(limit, n, blockSize), blockSize},
                row.values, zel::roundedCapacity(n), row.sample, 1ull, n);
  }

  zelmag::AbstractMatrix<T>* samples = nullptr;
  SVM_KERNEL kernelType = SVM_KERNEL_UNSUPPORTED;
};

}  // namespace

template <>
std::unique_ptr<KernelRows<double>> makeKernelRows() {
  return std::make_unique<DeviceKernelRows<double>>();
}

}  // namespace zelsvm::inline ZEL_PLATFORM
