#include "training/pairs/multiclass_definition.h"

#include <algorithm>
#include <utility>

#include "base/errors.h"
#include "base/memory.h"
#include "platform/system/available_memory.h"
#include "training/model_extraction.h"

namespace zelsvm {

template <typename T>
MulticlassDefinition<T>::MulticlassDefinition(const SvmData<T>& data,
                                              SvmLabelClassifier<T>&& classifier)
    : data(&data), classifier(std::move(classifier)) {
  requireMemory();
  const auto k = static_cast<std::uint32_t>(this->classifier.labels().size());
  for (std::uint32_t a = 0; a < k; ++a)
    for (std::uint32_t b = a + 1; b < k; ++b) places.emplace_back(a, b);
  solutions.resize(places.size());
}

template <typename T>
void MulticlassDefinition<T>::requireMemory() const {
  const std::uint64_t k = classifier.labels().size();
  const std::uint64_t available = zel::availableHostMemory();
  std::uint64_t bytes = zelsvm::pairCount(k) * sizeof(Solution) +
                        (k - 1) * data->matrix().rows() * sizeof(T);  // the coefficients
  // Very many pairs exceed the memory before the first is added, so adding up never takes long.
  for (std::uint64_t a = 0; a < k && bytes <= available; ++a)
    for (std::uint64_t b = a + 1; b < k; ++b)
      bytes += zel::roundedCapacity(classifier.count(a) + classifier.count(b)) * sizeof(T);
  if (bytes > available)
    zel::throwAppException("The solutions of %lu label pairs do not fit into memory.",
                           zelsvm::pairCount(k));
}

template <typename T>
std::uint64_t MulticlassDefinition<T>::sampleCount(std::uint64_t pair) const {
  return classifier.count(places[pair].first) + classifier.count(places[pair].second);
}

template <typename T>
MulticlassData<T> MulticlassDefinition<T>::problem(std::uint64_t pair) {
  const auto [a, b] = places[pair];
  auto first = classifier.samplesOf(a);
  auto second = classifier.samplesOf(b);
  const LabelPair labels{classifier.labels()[a], classifier.labels()[b]};
  return MulticlassData<T>(*data, labels, pair, first, second);
}

template <typename T>
void MulticlassDefinition<T>::takeSolution(std::uint64_t pair, HostVector<T>&& alpha,
                                           const SmoSolution& found) {
  solutions[pair] = {std::move(alpha), found.rho, reportOf(found)};
}

template <typename T>
T MulticlassDefinition<T>::multiplier(std::uint64_t label, std::uint64_t other,
                                      std::uint64_t position) const {
  const std::uint64_t k = classifier.labels().size();
  if (label < other) return solutions[pairIndex(label, other, k)].alpha[position];
  const T a = solutions[pairIndex(other, label, k)].alpha[classifier.count(other) + position];
  return a == 0 ? 0 : -a;
}

template <typename T>
void MulticlassDefinition<T>::collectClass(std::uint64_t label,
                                           std::vector<unsigned long long>& indices,
                                           std::vector<T>& coefficients) {
  const std::uint64_t k = classifier.labels().size();
  const auto samples = classifier.samplesOf(label);
  std::vector<T> row(k - 1);
  for (std::uint64_t position = 0; position < samples.size(); ++position) {
    for (std::uint64_t other = 0, column = 0; other < k; ++other)
      if (other != label) row[column++] = multiplier(label, other, position);
    if (std::all_of(row.begin(), row.end(), [](T c) { return c == 0; })) continue;
    indices.push_back(samples[position]);
    coefficients.insert(coefficients.end(), row.begin(), row.end());
  }
}

template <typename T>
void MulticlassDefinition<T>::combine(GenericModel<T>& model) {
  const std::uint64_t k = classifier.labels().size();
  HostVector<T> labels(k);
  zel::IndexList<> sizes(k);
  std::vector<unsigned long long> indices;
  std::vector<T> coefficients;
  for (std::uint64_t c = 0; c < k; ++c) {
    const std::uint64_t before = indices.size();
    collectClass(c, indices, coefficients);
    labels.set(c, classifier.labels()[c]);
    sizes[c] = indices.size() - before;
  }
  requireVectorCount(indices.size(), data->sampleCount());

  HostVector<T> rho(solutions.size());
  model.solves.clear();
  for (std::uint64_t t = 0; t < solutions.size(); ++t) {
    rho.set(t, solutions[t].rho);
    model.solves.push_back(solutions[t].report);
  }
  zel::IndexList<> indexList(indices.size());
  std::copy(indices.begin(), indices.end(), indexList.data());
  HostVector<T> coefficientVector(coefficients.size());
  std::copy(coefficients.begin(), coefficients.end(), coefficientVector.data());
  model.setLabels(std::move(labels));
  model.setRho(std::move(rho));
  model.setClassSizes(std::move(sizes));
  model.setIndices(std::move(indexList));
  model.setCoefficients(std::move(coefficientVector));
  model.gatherVectors(data->matrix());
}

template class MulticlassDefinition<double>;

}  // namespace zelsvm
