#include "zeldplus/zelsvm/data/matrix.h"

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/data/dense_matrix.h"
#include "zeldplus/zelsvm/data/sparse_matrix.h"

namespace zelmag::inline ZEL_PLATFORM {

using zelsvm::HostVector;

template <typename T>
AbstractMatrix<T>::AbstractMatrix(std::uint64_t cols, std::uint64_t rows)
    : colCount(cols), rowCount(rows) {
  if (cols == 0 || rows == 0) throw zel::AppException("Invalid zero data dimensions.");
  norms.resize(rows);
}

template <typename T>
void AbstractMatrix<T>::inheritRows(const AbstractMatrix& source,
                                    const zel::IndexList<>& selection) {
  ids.resize(selection.size());
  const bool hasIds = source.ids.size() != 0;
  for (std::uint64_t k = 0; k < selection.size(); ++k) {
    ids[k] = hasIds ? source.ids[selection[k]] : selection[k];
    norms.set(k, source.norms[selection[k]]);
  }
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> createMatrix(T* values, int* columnIndices, int* rowOffsets,
                                                std::uint64_t cols, std::uint64_t rows,
                                                zellas::LasContext& context) {
  if (auto* sparse = dynamic_cast<zellas::SparseContext<T>*>(&context)) {
    const auto count = static_cast<std::uint64_t>(rowOffsets[rows]);
    return std::make_unique<SparseMatrix<T>>(
        HostVector<T>(count, values), HostVector<int>(count, columnIndices),
        HostVector<int>(rows + 1, rowOffsets), cols, rows, *sparse);
  }
  if (auto* dense = dynamic_cast<zellas::BlasContext*>(&context))
    return std::make_unique<DenseMatrix<T>>(HostVector<T>(rows * cols, values), cols, rows, *dense);
  return nullptr;
}

template class AbstractMatrix<double>;
template std::unique_ptr<AbstractMatrix<double>> createMatrix(double*, int*, int*, std::uint64_t,
                                                              std::uint64_t, zellas::LasContext&);

}  // namespace zelmag::inline ZEL_PLATFORM
