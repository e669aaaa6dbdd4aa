#include "zeldplus/zelsvm/model/finite_model.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "zeldplus/inc/zelerrors.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

bool isFinite(double v) { return std::isfinite(v); }
bool isFinite(const double2& pair) { return isFinite(pair.x) && isFinite(pair.y); }

template <typename T>
void requireFinite(const T* values, std::uint64_t count, const char* what) {
  if (!std::all_of(values, values + count, [](const T& v) { return isFinite(v); }))
    zel::throwAppException("The SVM %s are not finite numbers.", what);
}

template <typename List>
void requireFinite(const List& list, const char* what) {
  requireFinite(list.data(), list.size(), what);
}

}  // namespace

template <typename T>
void requireFinite(const ModelHeader& header, const GenericModel<T>& model) {
  requireFinite(std::array{header.degree, header.gamma, header.coef0}, "kernel parameters");
  requireFinite(std::array{header.xRange, header.yRange, header.yBounds}, "scale bounds");
  requireFinite(header.featureBounds, "scale bounds");
  requireFinite(std::array{header.sigma}, "probability parameters");
  requireFinite(header.probabilityA, "probability parameters");
  requireFinite(header.probabilityB, "probability parameters");
  requireFinite(header.labels, "labels");
  requireFinite(header.rho, "rho values");
  requireFinite(model.coefficients(), "coefficients");
  requireFinite(model.vectors().values(), model.vectors().valueCount(), "vectors");
}

template void requireFinite(const ModelHeader&, const GenericModel<double>&);

}  // namespace zelsvm::inline ZEL_PLATFORM
