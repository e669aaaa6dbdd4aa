#include <utility>

#include "base/files.h"
#include "data/scaled_data.h"
#include "library/engine_call.h"
#include "library/kernel_samples.h"
#include "library/model_state.h"
#include "library/rows.h"
#include "model/model_bytes.h"
#include "platform/host/host_machine.h"
#include "prediction/prediction_handlers.h"
#include "prediction/predictor.h"
#include "runs/processor.h"
#include "runs/scaled_runs.h"

namespace zelsvm {
namespace {

using detail::ModelState;

const ModelState& required(const std::unique_ptr<ModelState>& state) {
  if (!state) throw AppException("The model was moved away.");
  return *state;
}

// One value per function and sample, function by function, in the order of samples.
std::vector<double> bySample(const HostVector<double>& values, std::uint64_t samples) {
  const std::uint64_t functions = values.size() / samples;
  std::vector<double> ordered(values.size());
  for (std::uint64_t f = 0; f < functions; ++f)
    for (std::uint64_t i = 0; i < samples; ++i)
      ordered[i * functions + f] = values[f * samples + i];
  return ordered;
}

std::unique_ptr<zelmag::AbstractMatrix<double>> testMatrix(
    const ModelState& state, const std::shared_ptr<const detail::Rows>& rows) {
  const bool precomputed = state.context->kernelType == SVM_KERNEL_PRECOMPUTED;
  if (precomputed != (rows->kernel != nullptr))
    throw AppException(precomputed ? "This model takes kernel values, not features."
                                   : "This model takes features, not kernel values.");
  if (precomputed) return detail::testKernel(*rows, *state.model);
  return detail::matrixOf(*detail::widened(rows, state.model->testWidth()));
}

Predictions predictRows(const ModelState& state, const Samples& samples, bool probability) {
  const auto rows = detail::Access::rows(samples);
  const auto matrix = testMatrix(state, rows);
  // Nothing is known of the samples but their features.
  HostVector<double> targets(rows->rows);
  targets.fill(0);
  UserData<double> data(*matrix, targets);
  GenericProcessor<double> processor(*state.context, Undecided::hasFirstLabel);
  DecisionRecord<double> decisions;
  if (state.context->problemKind != ProblemKind::regression) processor.addHandler(decisions);
  const auto found = state.predictors.with(
      [&] {
        return state.context->machine.makePredictor(decisionTask(*state.context, *state.model));
      },
      [&](PredictorMachine& predictor) {
        processor.usePredictor(predictor);
        return predictScaled(processor, *state.context, *state.model, data, probability);
      });
  return {detail::toVector(found.predictions), bySample(decisions.values, rows->rows),
          detail::toVector(found.probabilities)};
}

}  // namespace

Model detail::Access::model(std::unique_ptr<ModelState> state) { return Model(std::move(state)); }

Model::Model(std::unique_ptr<ModelState> state) : state(std::move(state)) {}
Model::Model(Model&&) noexcept = default;

Model& Model::operator=(Model&&) noexcept = default;
Model::~Model() = default;

Model Model::load(const std::string& path, unsigned indexBase, const Sink& sink) {
  return detail::callEngine(sink, [&] {
    return Model(
        std::make_unique<ModelState>(readModel<double>(path, indexBase, false, hostMachine())));
  });
}

void Model::save(const std::string& path, unsigned indexBase) const {
  const ModelState& trained = required(state);
  detail::callEngine({}, [&] { writeModel(path, indexBase, *trained.context, *trained.model); });
}

std::string Model::toBytes() const {
  const ModelState& trained = required(state);
  return detail::callEngine({}, [&] { return modelBytes(*trained.context, *trained.model); });
}

Model Model::fromBytes(std::string_view bytes) {
  return detail::callEngine({}, [&] {
    return Model(std::make_unique<ModelState>(modelFromBytes<double>(bytes, hostMachine())));
  });
}

void Model::saveExact(const std::string& path) const {
  const std::string bytes = toBytes();
  detail::callEngine({}, [&] {
    zel::CFile file(zel::FileMode::write);
    file.open(path);
    file.write(bytes.data(), bytes.size());
    file.close();
  });
}

Predictions Model::predict(const Samples& samples, bool probability, const Sink& sink) const {
  const ModelState& trained = required(state);
  return detail::callEngine(sink, [&] { return predictRows(trained, samples, probability); });
}

Formulation Model::formulation() const {
  return static_cast<Formulation>(required(state).context->svmType);
}

std::vector<double> Model::labels() const {
  const auto& model = *required(state).model;
  return model.hasLabels() ? detail::toVector(model.labels()) : std::vector<double>{};
}

std::size_t Model::supportVectorCount() const { return required(state).model->vectors().rows(); }

std::size_t Model::featureCount() const { return required(state).model->featureCount; }

bool Model::hasProbability() const { return required(state).model->probability; }

double Model::residualScale() const { return required(state).model->residualScale(); }

}  // namespace zelsvm
