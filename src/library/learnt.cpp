// What a model tells of what it has learnt.
#include <algorithm>
#include <utility>

#include "data/bounds.h"
#include "library/engine_call.h"
#include "library/model_state.h"
#include "library/rows.h"

namespace zelsvm {
namespace {

using detail::ModelState;
using Matrix = zelmag::AbstractMatrix<double>;

const ModelState& required(const std::unique_ptr<ModelState>& state) {
  if (!state) throw AppException("The model was moved away.");
  return *state;
}

Samples copyOf(const Matrix& matrix) {
  if (!matrix.isSparse())
    return Samples::dense(
        std::vector<double>(matrix.values(), matrix.values() + matrix.valueCount()), matrix.cols());
  const std::uint64_t count = matrix.valueCount();
  std::vector<int> columns(count);
  for (std::uint64_t k = 0; k < count; ++k)
    columns[k] =
        static_cast<int>(matrix.features()[static_cast<std::uint64_t>(matrix.columnIndices()[k])]);
  return Samples::csr(
      std::vector<double>(matrix.values(), matrix.values() + count), std::move(columns),
      {matrix.rowOffsets(), matrix.rowOffsets() + matrix.rows() + 1}, matrix.features().count());
}

// Where the vectors were never seen unscaled.
Samples unscaled(const Matrix& matrix, const SvmScale<double>& scale) {
  const std::uint64_t features = std::max(matrix.features().count(), scale.featureCount());
  zel::requireHostMemory(matrix.rows() * features, sizeof(double));
  std::vector<double> values(matrix.rows() * features);
  std::vector<double> row(matrix.cols());
  for (std::uint64_t i = 0; i < matrix.rows(); ++i) {
    matrix.copyRow(row.data(), i, true);
    double* const target = values.data() + i * features;
    for (std::uint64_t j = 0; j < row.size(); ++j) {
      const std::uint64_t known = scale.featureNumbers().find(matrix.features()[j]);
      const bool isScaled = known < scale.featureBounds().size();
      target[matrix.features()[j]] = isScaled
                                         ? zelmag::Multiscale<double>::unscale(
                                               row[j], scale.xRange(), scale.featureBounds()[known])
                                         : row[j];
    }
  }
  return Samples::dense(std::move(values), features);
}

}  // namespace

std::vector<std::size_t> Model::supportCounts() const {
  const auto& model = *required(state).model;
  if (!model.hasLabels()) return {};
  const auto sizes = detail::toVector(model.classSizes());
  return {sizes.begin(), sizes.end()};
}

std::vector<std::size_t> Model::supportIndices() const {
  const auto indices = required(state).model->indices();
  return {indices.begin(), indices.end()};
}

Samples Model::supportVectors() const {
  const ModelState& trained = required(state);
  return detail::callEngine({}, [&] {
    if (trained.context->kernelType == SVM_KERNEL_PRECOMPUTED)
      throw AppException("Support vectors of a precomputed kernel have indices and no features.");
    if (trained.model->givenVectors) return copyOf(*trained.model->givenVectors);
    const auto& model = *trained.model;
    return model.scale.scalesFeatures() ? unscaled(model.vectors(), model.scale)
                                        : copyOf(model.vectors());
  });
}

std::vector<double> Model::dualCoefficients() const {
  const auto& model = *required(state).model;
  if (!model.hasLabels()) return detail::toVector(model.coefficients());
  const std::uint64_t vectors = model.vectors().rows();
  std::vector<double> byFunction;
  HostVector<double> one(vectors);
  for (std::uint64_t a = 0; a < model.labels().size(); ++a)
    for (std::uint64_t b = a + 1; b < model.labels().size(); ++b) {
      model.pairCoefficients(one, a, b);
      byFunction.insert(byFunction.end(), one.data(), one.data() + vectors);
    }
  return byFunction;
}

std::vector<double> Model::intercepts() const {
  std::vector<double> offsets = detail::toVector(required(state).model->rho());
  for (double& offset : offsets) offset = -offset;
  return offsets;
}

Parameters Model::parameters() const {
  const ModelState& trained = required(state);
  const SvmContext<double>& context = *trained.context;
  const GenericModel<double>& model = *trained.model;
  const zel::Interval& features = model.scale.xRange();
  const zel::Interval& targets = model.scale.yRange();
  return {.formulation = static_cast<Formulation>(context.svmType),
          .kernel = context.kernelType == SVM_KERNEL_PRECOMPUTED
                        ? Kernel::precomputed
                        : static_cast<Kernel>(context.kernelType),
          .gamma = context.kernelSettings(model.featureCount).gamma,
          .coef0 = context.coef0,
          .degree = context.degree,
          .cost = context.C,
          .classWeights = context.weights,
          .nu = context.nu,
          .epsilon = context.p,
          .tolerance = context.eps,
          .maxIterations = context.limitOfIterations(),
          .cacheMegabytes = context.cacheSize,
          .shrinking = context.shrinking,
          .probability = model.probability,
          .randomSeed = model.seed,
          .featureScale = {features.lower, features.upper},
          .targetScale = {targets.lower, targets.upper}};
}

std::vector<Solve> Model::solves() const {
  std::vector<Solve> told;
  for (const SolveReport& solve : required(state).model->solves)
    told.push_back(
        {solve.iterations, solve.isConverged, solve.gap, solve.objective, solve.seconds});
  return told;
}

}  // namespace zelsvm
