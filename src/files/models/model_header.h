// The header of a model file: everything but the support vectors and their coefficients.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/interval.h"
#include "data/bounds.h"

namespace zelsvm {

// Lists are empty and names are empty where the file has no such line. Pairs of classes are in the
// order (0,1), (0,2), ..., (1,2), ...
struct ModelHeader {
  std::string algorithmName;
  std::string kernelName;
  double degree = 0;
  double gamma = 0;
  double coef0 = 0;
  double sigma = 0;
  std::uint64_t classCount = 2;
  std::uint64_t totalVectors = 0;
  std::vector<double> rho;           // one per pair of classes
  std::vector<double> labels;        // one per class
  std::vector<int> classSizes;       // support vectors per class
  std::vector<double> probabilityA;  // one per pair of classes
  std::vector<double> probabilityB;  // one per pair of classes
  zel::Interval xRange{};            // features are scaled to it; equal bounds: they are not
  zel::Interval yRange{};            // targets are scaled to it; equal bounds: they are not
  zel::Interval yBounds{};           // minimum and maximum of the unscaled targets
  zelmag::BoundsByFeature featureBounds;
};

}  // namespace zelsvm
