#include <algorithm>
#include <cmath>
#include <ctime>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "base/random.h"
#include "data/filtered_data.h"
#include "data/scaled_data.h"
#include "library/engine_call.h"
#include "library/gamma_rule.h"
#include "library/kernel_samples.h"
#include "library/model_state.h"
#include "library/parameter_ranges.h"
#include "library/rows.h"
#include "platform/host/host_machine.h"
#include "runs/processor.h"
#include "runs/scaled_runs.h"
#include "training/folds.h"

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
          .precomputed = parameters.kernel == Kernel::precomputed,
          .anyLabels = true};
}

zel::Interval rangeOf(const Interval& interval) { return {interval.lower, interval.upper}; }

void requireWeights(std::span<const double> weights, std::uint64_t samples) {
  if (weights.empty()) return;
  if (weights.size() != samples) throw AppException("There must be one weight for every sample.");
  double sum = 0;
  for (std::size_t i = 0; i < weights.size(); ++i) {
    if (!std::isfinite(weights[i]) || weights[i] < 0)
      throw AppException("The weight of sample " + std::to_string(i + 1) +
                         " is not a finite number of 0 or more.");
    sum += weights[i];
  }
  if (!std::isfinite(sum) || sum <= 0)
    throw AppException("The weights must add up to a finite number above 0.");
}

// The start of the counting samples' training, a whole row for each of their label pairs.
std::vector<double> startOf(const Start& start, const SvmContext<double>& context,
                            const SvmData<double>& data, const zel::IndexList<>& counting) {
  const std::span<const double> given = start.coefficients;
  if (given.empty()) return {};
  std::uint64_t pairs = 1;
  if (context.problemKind == ProblemKind::classification) {
    std::set<double> labels;
    for (std::uint64_t k = 0; k < counting.size(); ++k)
      if (std::isfinite(data.label(counting[k]))) labels.insert(data.label(counting[k]));
    pairs = labels.size() * (labels.size() - 1) / 2;
  }
  const std::uint64_t samples = pairs == 0 ? 0 : given.size() / pairs;
  if (samples * pairs != given.size() || samples > data.sampleCount())
    throw AppException(
        "A start must have a coefficient for every pair of labels and each of the "
        "first samples.");
  if (!std::all_of(given.begin(), given.end(), [](double c) { return std::isfinite(c); }))
    throw AppException("The coefficients of a start must be finite numbers.");
  std::vector<double> whole;
  for (std::uint64_t pair = 0; pair < pairs; ++pair)
    for (std::uint64_t k = 0; k < counting.size(); ++k)
      whole.push_back(counting[k] < samples ? given[pair * samples + counting[k]] : 0);
  return whole;
}

// What becomes of samples that count nothing.
enum class Weightless { absent, predicted };

zel::IndexList<> indexList(std::span<const unsigned long long> indices) {
  zel::IndexList<> list(indices.size());
  std::copy(indices.begin(), indices.end(), list.data());
  return list;
}

// The data of a training and all that it needs, in the order that they depend on each other.
class Task {
 public:
  Task(const Samples& samples, std::span<const double> targets, const Parameters& parameters,
       std::span<const double> weights, Weightless weightless)
      : rows(detail::Access::rows(samples)) {
    if (targets.size() != rows->rows)
      throw AppException("There must be one label or target for every sample.");
    requireWeights(weights, rows->rows);
    detail::requireParameters(parameters);
    detail::requireKernelFits(*rows, parameters);
    makeContext(parameters);
    zel::seedRandom(parameters.randomSeed);
    matrix = rows->kernel ? detail::trainingKernel(*rows) : detail::matrixOf(*rows);
    // Only looked at: what is trained on is a scaled copy.
    labels = HostVector<double>(targets.size(), const_cast<double*>(targets.data()));
    data = std::make_unique<UserData<double>>(*matrix, labels);
    data->setWeights({weights.begin(), weights.end()});
    counting = CountingSamples(weights, rows->rows);
    if (counting.count() != rows->rows) chosen.emplace(*data, counting.numbers());
    model = std::make_unique<GenericModel<double>>();
    model->seed = parameters.randomSeed;
    const SvmData<double>& counted = chosen ? static_cast<SvmData<double>&>(*chosen) : *data;
    fillScale(model->scale, *context, counted,
              {rangeOf(parameters.featureScale), rangeOf(parameters.targetScale)});
    scaled = std::make_unique<ScaledData<double>>(
        weightless == Weightless::absent ? counted : *data, model->scale);
    if (rows->kernel || parameters.gamma.rule != Gamma::oneOverFeaturesTimesVariance) return;
    Parameters computed = parameters;
    computed.gamma = detail::gammaByVariance(*scaled);
    makeContext(computed);
  }

  void makeContext(const Parameters& parameters) {
    context = std::make_unique<SvmContext<double>>(engineParameters(parameters, rows->isSparse()),
                                                   ParameterChecks::training, hostMachine());
  }

  // The trained model; the task is over.
  std::unique_ptr<detail::ModelState> finish() {
    if (chosen) {
      zel::IndexList<> inAll(model->indices().size());
      for (std::uint64_t k = 0; k < inAll.size(); ++k)
        inAll[k] = counting.numbers()[model->indices()[k]];
      model->setIndices(std::move(inAll));
    }
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
  CountingSamples counting;
  std::optional<FilteredData<double>> chosen;  // the counting ones of the data, if not all count
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
  return train(samples, targets, parameters, {}, sink);
}

Model train(const Samples& samples, std::span<const double> targets, const Parameters& parameters,
            std::span<const double> weights, const Sink& sink, const Start& start) {
  return detail::callEngine(sink, [&] {
    Task task(samples, targets, parameters, weights, Weightless::absent);
    task.scaled->setStart(startOf(start, *task.context, *task.data, task.counting.numbers()));
    GenericProcessor<double>(*task.context)
        .train(*task.model, *task.scaled, parameters.probability);
    if (task.rows->kernel) detail::releaseKernel(*task.model);
    return detail::Access::model(task.finish());
  });
}

CrossValidation crossValidate(const Samples& samples, std::span<const double> targets,
                              const Parameters& parameters, std::size_t folds, const Sink& sink) {
  return crossValidate(samples, targets, parameters, folds, {}, sink);
}

CrossValidation crossValidate(const Samples& samples, std::span<const double> targets,
                              const Parameters& parameters, std::size_t folds,
                              std::span<const double> weights, const Sink& sink) {
  if (folds < 2) throw AppException("Cross-validation needs at least 2 folds.");
  return detail::callEngine(sink, [&] {
    Task task(samples, targets, parameters, weights, Weightless::predicted);
    const std::uint64_t count = std::min<std::uint64_t>(folds, task.counting.count());
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
