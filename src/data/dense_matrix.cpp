#include "data/dense_matrix.h"

#include <cstring>
#include <utility>

namespace zelmag {

using zelsvm::HostVector;

template <typename T>
DenseMatrix<T>::DenseMatrix(HostVector<T>&& values, FeatureNumbers features, std::uint64_t rows)
    : FullMatrix<T>(std::move(features), rows), elements(std::move(values)) {
  this->makeNorms();
}

template <typename T>
DenseMatrix<T>::DenseMatrix(const FullMatrix<T>& source, const zel::IndexList<>& selection)
    : FullMatrix<T>(source.features(), selection.size()),
      elements(source.cols() * selection.size()) {
  for (std::uint64_t k = 0; k < selection.size(); ++k)
    source.copyRow(elements.at(k * source.cols()), selection[k], false);
  this->inheritRows(source, selection);
}

template <typename T>
void DenseMatrix<T>::copyStretch(T* target, std::uint64_t row, std::uint64_t begin,
                                 std::uint64_t end) const {
  std::memcpy(target, elements.at(row * this->cols() + begin), (end - begin) * sizeof(T));
}

template class DenseMatrix<double>;

}  // namespace zelmag
