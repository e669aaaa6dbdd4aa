#include <algorithm>
#include <ctime>
#include <utility>

#include "base/random.h"
#include "data/scaled_data.h"
#include "library/engine_call.h"
#include "library/gamma_rule.h"
#include "library/model_state.h"
#include "library/parameter_ranges.h"
#include "library/rows.h"
#include "platform/host/host_machine.h"
#include "runs/processor.h"
#include "runs/scaled_runs.h"

namespace zelsvm {
namespace {

SvmParameters engineParameters(const Parameters& parameters, bool sparse) {
  return {.svmType = static_cast<int>(parameters.formulation),
          .kernelType = static_cast<int>(parameters.kernel),
          .degree = parameters.degree,
          .gamma = parameters.gamma.value,
          .zeroGamma = parameters.gamma.rule == Gamma::number,
          .coef0 = parameters.coef0,
          .C = parameters.cost,
          .p = parameters.epsilon,
          .nu = parameters.nu,
          .eps = parameters.tolerance,
          .weights = parameters.classWeights,
          .maxIterations = parameters.maxIterations,
          .cacheSize = parameters.cacheMegabytes,
          .sparse = sparse,
          .shrinking = parameters.shrinking,
          .anyLabels = true};
}

zel::Interval rangeOf(const Interval& interval) { return {interval.lower, interval.upper}; }

zel::IndexList<> indexList(std::span<const unsigned long long> indices) {
  zel::IndexList<> list(indices.size());
  std::copy(indices.begin(), indices.end(), list.data());
  return list;
}

// The data of a training and all that it needs, in the order that they depend on each other.
class Task {
 public:
  Task(const Samples& samples, std::span<const double> targets, const Parameters& parameters)
      : rows(detail::Access::rows(samples)) {
    if (targets.size() != rows->rows)
      throw AppException("There must be one label or target for every sample.");
    detail::requireParameters(parameters);
    makeContext(parameters);
    zel::seedRandom(parameters.randomSeed);
    matrix = detail::matrixOf(*rows);
    // Only looked at: what is trained on is a scaled copy.
    labels = HostVector<double>(targets.size(), const_cast<double*>(targets.data()));
    data = std::make_unique<UserData<double>>(*matrix, labels);
    model = std::make_unique<GenericModel<double>>();
    model->seed = parameters.randomSeed;
    fillScale(model->scale, *context, *data,
              {rangeOf(parameters.featureScale), rangeOf(parameters.targetScale)});
    scaled = std::make_unique<ScaledData<double>>(*data, model->scale);
    if (parameters.gamma.rule != Gamma::oneOverFeaturesTimesVariance) return;
    Parameters computed = parameters;
    computed.gamma = detail::gammaByVariance(scaled->matrix());
    makeContext(computed);
  }

  void makeContext(const Parameters& parameters) {
    context = std::make_unique<SvmContext<double>>(engineParameters(parameters, rows->isSparse()),
                                                   ParameterChecks::training, hostMachine());
  }

  // The trained model; the task is over.
  std::unique_ptr<detail::ModelState> finish() {
    if (model->scale.scalesFeatures())
      model->givenVectors = matrix->subset(indexList(model->indices()));
    return std::make_unique<detail::ModelState>(LoadedModel<double>{
        .reader = nullptr, .context = std::move(context), .model = std::move(model)});
  }

  std::shared_ptr<const detail::Rows> rows;
  std::unique_ptr<SvmContext<double>> context;
  std::unique_ptr<zelmag::AbstractMatrix<double>> matrix;
  HostVector<double> labels;
  std::unique_ptr<UserData<double>> data;
  std::unique_ptr<GenericModel<double>> model;
  std::unique_ptr<ScaledData<double>> scaled;
};

Score scoreOf(bool regression, double primary, double secondary) {
  if (regression) return {.meanSquaredError = primary, .squaredCorrelation = secondary};
  return {.accuracy = primary};
}

}  // namespace

unsigned seedFromClock() { return static_cast<unsigned>(std::time(nullptr)); }

Model train(const Samples& samples, std::span<const double> targets, const Parameters& parameters,
            const Sink& sink) {
  return detail::callEngine(sink, [&] {
    Task task(samples, targets, parameters);
    GenericProcessor<double>(*task.context)
        .train(*task.model, *task.scaled, parameters.probability);
    return detail::Access::model(task.finish());
  });
}

CrossValidation crossValidate(const Samples& samples, std::span<const double> targets,
                              const Parameters& parameters, std::size_t folds, const Sink& sink) {
  if (folds < 2) throw AppException("Cross-validation needs at least 2 folds.");
  return detail::callEngine(sink, [&] {
    Task task(samples, targets, parameters);
    const std::uint64_t count = std::min<std::uint64_t>(folds, samples.rows());
    HostVector<double> predictions(samples.rows());
    HostVector<double> primary(count + 1);
    HostVector<double> secondary(count + 1);
    crossValidateScaled(predictions, primary, secondary, *task.context, *task.scaled,
                        task.model->scale, count, parameters.probability, Undecided::hasFirstLabel);
    const bool regression = task.context->problemKind == ProblemKind::regression;
    CrossValidation result{.predictions = detail::toVector(predictions),
                           .overall = scoreOf(regression, primary[0], secondary[0]),
                           .folds = {}};
    for (std::uint64_t f = 1; f <= count; ++f)
      result.folds.push_back(scoreOf(regression, primary[f], secondary[f]));
    return result;
  });
}

}  // namespace zelsvm
