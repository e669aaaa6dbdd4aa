#include "training/model_extraction.h"

#include <utility>

#include "base/errors.h"

namespace zelsvm {
namespace {

// Support vectors as they are found: row numbers with their coefficients.
template <typename T>
class VectorCollector {
 public:
  explicit VectorCollector(std::uint64_t capacity) : coefficients(capacity), indices(capacity) {}

  void add(std::uint64_t sample, T coefficient) {
    coefficients.set(count, coefficient);
    indices[count++] = sample;
  }
  [[nodiscard]] std::uint64_t size() const { return count; }

  void finish(GenericModel<T>& model, const SvmData<T>& data) {
    requireVectorCount(count, data.sampleCount());
    coefficients.resize(count);
    indices.resize(count);
    model.setCoefficients(std::move(coefficients));
    model.setIndices(std::move(indices));
    model.gatherVectors(data.matrix());
  }

 private:
  HostVector<T> coefficients;
  zel::IndexList<> indices;
  std::uint64_t count = 0;
};

template <typename T>
HostVector<T> single(T value) {
  HostVector<T> v(1);
  v.set(0, value);
  return v;
}

}  // namespace

void requireVectorCount(std::uint64_t vectors, std::uint64_t samples) {
  if (vectors == 0) throw zel::AppException("Unable to create support vectors.");
  if (vectors > samples) throw zel::AppException("Out of bound support vectors.");
}

template <typename T>
void extractTwoClass(GenericModel<T>& model, const SvmData<T>& data, const LabelPair& labels,
                     const SolvedProblem<T>& solved) {
  const HostVector<T>& alpha = solved.problem.alpha;
  const std::uint64_t n = data.sampleCount();
  VectorCollector<T> found(n);
  zel::IndexList<> sizes(2);
  for (const int side : {1, -1}) {
    const std::uint64_t before = found.size();
    for (std::uint64_t i = 0; i < n; ++i)
      if (alpha[i] != 0 && solved.problem.signs[i] == side) found.add(i, side * alpha[i]);
    sizes[side > 0 ? 0 : 1] = found.size() - before;
  }
  HostVector<T> labelVector(2);
  labelVector.set(0, labels.first);
  labelVector.set(1, labels.second);
  model.setLabels(std::move(labelVector));
  model.setRho(single<T>(solved.solution.rho));
  model.solves = {reportOf(solved.solution)};
  model.setClassSizes(std::move(sizes));
  found.finish(model, data);
}

template <typename T>
void extractRegression(GenericModel<T>& model, const SvmData<T>& data,
                       const SolvedProblem<T>& solved) {
  const HostVector<T>& alpha = solved.problem.alpha;
  const std::uint64_t n = data.sampleCount();
  VectorCollector<T> found(n);
  for (std::uint64_t i = 0; i < n; ++i)
    if (alpha[i] != 0) found.add(i, alpha[i]);
  model.setRho(single<T>(solved.solution.rho));
  model.solves = {reportOf(solved.solution)};
  found.finish(model, data);
}

template void extractTwoClass(GenericModel<double>&, const SvmData<double>&, const LabelPair&,
                              const SolvedProblem<double>&);
template void extractRegression(GenericModel<double>&, const SvmData<double>&,
                                const SolvedProblem<double>&);

}  // namespace zelsvm
