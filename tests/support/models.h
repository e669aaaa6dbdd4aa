// Models made by hand, and what becomes of test samples under a model.
#pragma once

#include <memory>
#include <random>
#include <utility>
#include <vector>

#include "model/generic_model.h"
#include "parameters/svm_context.h"
#include "prediction/predictor.h"
#include "support/host_vectors.h"
#include "support/samples.h"
#include "support/tested_machine.h"

namespace zeltest {

// Sixteenths: model files keep them exactly.
inline double sixteenth(std::mt19937& generator) {
  return static_cast<double>(static_cast<int>(generator() % 97) - 48) / 16;
}

inline std::vector<double> sixteenths(std::uint64_t count, unsigned seed) {
  std::mt19937 generator(seed);
  std::vector<double> values(count);
  for (double& value : values) value = generator() % 4 == 0 ? 0 : sixteenth(generator);
  return values;
}

// The rows as samples, their labels of no meaning.
inline Samples unlabelled(std::uint64_t cols, std::vector<double> values) {
  const std::uint64_t rows = values.size() / cols;
  return {cols, std::move(values), std::vector<double>(rows, 0)};
}

// labels and sizes are those of the classes; both empty for regression.
struct MadeModel {
  MadeModel(const zelsvm::SvmParameters& parameters, const Samples& vectors,
            const std::vector<double>& labels, const std::vector<unsigned long long>& sizes,
            unsigned seed)
      : context(parameters, zelsvm::ParameterChecks::model, zeltest::testedMachine()),
        rows(vectors),
        set(vectors, context) {
    const std::uint64_t k = labels.empty() ? 2 : labels.size();
    coefficients = sixteenths(vectors.rows() * (k - 1), seed);
    rho = sixteenths(zelsvm::pairCount(k), seed + 1);
    std::vector<unsigned long long> all(vectors.rows());
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
    model.setVectors(set.data().matrix().subset(indexList(all)));
    model.setCoefficients(hostVector(coefficients));
    model.setRho(hostVector(rho));
    model.featureCount = vectors.cols;
    if (labels.empty()) return;
    model.setLabels(hostVector(labels));
    model.setClassSizes(indexList(sizes));
  }

  zelsvm::SvmContext<double> context;
  Samples rows;
  DataSet set;
  std::vector<double> coefficients;
  std::vector<double> rho;
  zelsvm::GenericModel<double> model;
};

// Keeps what it is handed.
class RecordingHandler : public zelsvm::AbstractPredictionHandler<double> {
 public:
  void handle(zelsvm::HostVector<double>& output, const zelsvm::HostVector<double>& decisionValues,
              const zelsvm::GenericModel<double>& /*model*/) override {
    outputs = valuesOf(output);
    values = valuesOf(decisionValues);
    sameVector = &output == &decisionValues;
  }
  std::vector<double> outputs;
  std::vector<double> values;
  bool sameVector = false;
};

inline std::vector<double> decisionValues(zelsvm::SvmContext<double>& context,
                                          const zelsvm::GenericModel<double>& model,
                                          const Samples& test) {
  DataSet data(test, context);
  zelsvm::GenericPredictor<double> predictor(context, model);
  RecordingHandler handler;
  predictor.addHandler(handler);
  zelsvm::HostVector<double> output(test.rows());
  predictor.predict(output, data.data().matrix());
  return handler.values;
}

}  // namespace zeltest
