// A row-major matrix that stores every value.
#pragma once

#include <cstdint>
#include <memory>

#include "zeldplus/zelsvm/data/matrix.h"

namespace zelmag::inline ZEL_PLATFORM {

template <typename T>
class DenseMatrix : public AbstractMatrix<T> {
 public:
  // Takes over the vector (which may wrap memory owned elsewhere) of rows x cols values.
  DenseMatrix(zelsvm::HostVector<T>&& values, std::uint64_t cols, std::uint64_t rows,
              zellas::BlasContext& context);

  [[nodiscard]] const T* values() const override { return elements.data(); }
  [[nodiscard]] std::uint64_t valueCount() const override { return elements.size(); }
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> scaledCopy(
      const double2& range, const zelsvm::HostVector<double2>& bounds) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> subset(
      const zel::IndexList<>& selection) const override;
  void copyRow(T* target, std::uint64_t row, bool clear) const override;
  void collectBounds(zelsvm::HostVector<double2>& bounds) const override;
  [[nodiscard]] std::uint64_t scaledValueCount(
      const double2& range, const zelsvm::HostVector<double2>& bounds) const override;
  void exportScaled(T* values, int* columnIndices, int* rowOffsets, const double2& range,
                    const zelsvm::HostVector<double2>& bounds) const override;
  void rowProducts(zel::DeviceVector<T>& result, std::uint64_t row) override;
  void blockProducts(zel::DeviceVector<T>& block, std::uint64_t blockStride,
                     zel::DeviceVector<T>& result, std::uint64_t resultStride,
                     std::uint64_t count) override;
  zel::DeviceVector<T>& deviceRows(std::uint64_t first, std::uint64_t count) override;
  void releaseDevice() override;

 private:
  DenseMatrix(const DenseMatrix& source, const zel::IndexList<>& selection);
  void upload();

  zelsvm::HostVector<T> elements;
  zellas::BlasContext* context;
  std::unique_ptr<zel::DeviceVector<T>> deviceValues;
  std::unique_ptr<zellas::DenseMatrix<T>> deviceMatrix;
  std::unique_ptr<zel::DeviceVector<T>> deviceBlock;
};

}  // namespace zelmag::inline ZEL_PLATFORM
