#include "library/parameter_ranges.h"

#include <cmath>
#include <string>

namespace zelsvm::detail {
namespace {

void require(bool holds, const std::string& name, const std::string& range) {
  if (!holds) throw AppException("The parameter " + name + " " + range + ".");
}

void requireFinite(const std::string& name, double value) {
  require(std::isfinite(value), name, "is not a finite number");
}

void requireAbove0(const std::string& name, double value) {
  requireFinite(name, value);
  require(value > 0, name, "must be above 0");
}

void requireAtLeast0(const std::string& name, double value) {
  requireFinite(name, value);
  require(value >= 0, name, "must be at least 0");
}

void requireInterval(const std::string& name, const Interval& interval) {
  requireFinite(name, interval.lower);
  requireFinite(name, interval.upper);
  require(interval.lower <= interval.upper, name, "must have its lower end below its upper one");
  require(std::isfinite(interval.upper - interval.lower), name, "is too long");
}

}  // namespace

void requireParameters(const Parameters& parameters) {
  requireAtLeast0("gamma", parameters.gamma.value);
  requireFinite("coef0", parameters.coef0);
  requireAtLeast0("degree", parameters.degree);
  requireAbove0("cost", parameters.cost);
  for (const auto& [label, weight] : parameters.classWeights) {
    requireFinite("classWeights", label);
    requireAbove0("classWeights", weight);
  }
  requireAbove0("nu", parameters.nu);
  require(parameters.nu <= 1, "nu", "must be at most 1");
  requireAtLeast0("epsilon", parameters.epsilon);
  requireAbove0("tolerance", parameters.tolerance);
  requireInterval("featureScale", parameters.featureScale);
  requireInterval("targetScale", parameters.targetScale);
}

}  // namespace zelsvm::detail
