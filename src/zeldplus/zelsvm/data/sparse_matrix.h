// A matrix of compressed sparse rows with zero-based 32-bit indices.
#pragma once

#include <cstdint>
#include <memory>

#include "zeldplus/zelsvm/data/matrix.h"

namespace zelmag::inline ZEL_PLATFORM {

// The columns of a row may come in any order; where one repeats, the later entry counts wherever a
// row is written densely.
template <typename T>
class SparseMatrix : public AbstractMatrix<T> {
 public:
  // Takes over the vectors (which may wrap memory owned elsewhere): one value and column index per
  // stored entry and rows + 1 offsets.
  SparseMatrix(zelsvm::HostVector<T>&& values, zelsvm::HostVector<int>&& columnIndices,
               zelsvm::HostVector<int>&& rowOffsets, std::uint64_t cols, std::uint64_t rows,
               zellas::SparseContext<T>& context);

  [[nodiscard]] const T* values() const override { return elements.data(); }
  [[nodiscard]] const int* columnIndices() const override { return columns.data(); }
  [[nodiscard]] const int* rowOffsets() const override { return offsets.data(); }
  [[nodiscard]] std::uint64_t valueCount() const override { return elements.size(); }
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> scaledCopy(
      const double2& range, const zelsvm::HostVector<double2>& bounds) const override;
  [[nodiscard]] std::unique_ptr<AbstractMatrix<T>> subset(
      const zel::IndexList<>& selection) const override;
  void copyRow(T* target, std::uint64_t row, bool clear) const override;
  void collectBounds(zelsvm::HostVector<double2>& bounds) const override;
  [[nodiscard]] std::uint64_t scaledValueCount(
      const double2& range, const zelsvm::HostVector<double2>& bounds) const override;
  // Throws RuntimeException when the stored values outgrow 32-bit offsets.
  void exportScaled(T* values, int* columnIndices, int* rowOffsets, const double2& range,
                    const zelsvm::HostVector<double2>& bounds) const override;
  void rowProducts(zel::DeviceVector<T>& result, std::uint64_t row) override;
  void blockProducts(zel::DeviceVector<T>& block, std::uint64_t blockStride,
                     zel::DeviceVector<T>& result, std::uint64_t resultStride,
                     std::uint64_t count) override;
  zel::DeviceVector<T>& deviceRows(std::uint64_t first, std::uint64_t count) override;
  void releaseDevice() override;

 private:
  SparseMatrix(const SparseMatrix& source, const zel::IndexList<>& selection);
  void upload();
  [[nodiscard]] std::uint64_t rowBegin(std::uint64_t row) const;
  [[nodiscard]] std::uint64_t rowEnd(std::uint64_t row) const;
  [[nodiscard]] bool isFullRow(std::uint64_t row) const;

  zelsvm::HostVector<T> elements;
  zelsvm::HostVector<int> columns;
  zelsvm::HostVector<int> offsets;
  zellas::SparseContext<T>* context;
  zelsvm::HostVector<T> rowBuffer;
  std::unique_ptr<zel::DeviceVector<T>> deviceValues;
  std::unique_ptr<zel::DeviceVector<int>> deviceColumnIndices;
  std::unique_ptr<zel::DeviceVector<int>> deviceRowOffsets;
  std::unique_ptr<zellas::SparseMatrix<T>> deviceMatrix;
  std::unique_ptr<zel::DeviceVector<T>> deviceBlock;
  std::unique_ptr<zel::DeviceVector<T>> deviceRow;
};

}  // namespace zelmag::inline ZEL_PLATFORM
