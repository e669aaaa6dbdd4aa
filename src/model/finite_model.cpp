#include "model/finite_model.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

#include "base/errors.h"

namespace zelsvm {
namespace {

bool isFinite(double v) { return std::isfinite(v); }
bool isFinite(const zel::Interval& pair) { return isFinite(pair.lower) && isFinite(pair.upper); }

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
  for (const auto& [feature, bounds] : header.featureBounds)
    requireFinite(std::array{bounds}, "scale bounds");
  requireFinite(std::array{header.sigma}, "probability parameters");
  requireFinite(header.probabilityA, "probability parameters");
  requireFinite(header.probabilityB, "probability parameters");
  requireFinite(header.labels, "labels");
  requireFinite(header.rho, "rho values");
  requireFinite(model.coefficients(), "coefficients");
  requireFinite(model.vectors().values(), model.vectors().valueCount(), "vectors");
}

template void requireFinite(const ModelHeader&, const GenericModel<double>&);

}  // namespace zelsvm
