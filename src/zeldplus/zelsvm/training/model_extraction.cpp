#include "zeldplus/zelsvm/training/model_extraction.h"

#include <utility>

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/training/pair_view.h"

namespace zelsvm::inline ZEL_PLATFORM {
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

  void finish(GenericModel<T>& model, SvmData<T>& data) {
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
void extractTwoClass(GenericModel<T>& model, SvmData<T>& data, SolverProblem<T>&& problem,
                     const SmoSolution& solution) {
  if (auto* const view = dynamic_cast<PairView<T>*>(&data)) {
    view->takeSolution(std::move(problem.alpha), solution);
    return;
  }
  const std::uint64_t n = data.sampleCount();
  VectorCollector<T> found(n);
  zel::IndexList<> sizes(2);
  for (const int side : {1, -1}) {
    const std::uint64_t before = found.size();
    for (std::uint64_t i = 0; i < n; ++i)
      if (problem.alpha[i] != 0 && problem.y.at(i)->y == side)
        found.add(i, side * problem.alpha[i]);
    sizes[side > 0 ? 0 : 1] = found.size() - before;
  }
  const LabelPair pair = data.labelPair();
  HostVector<T> labels(2);
  labels.set(0, pair.first);
  labels.set(1, pair.second);
  model.setLabels(std::move(labels));
  model.setRho(single<T>(solution.rho));
  model.setClassSizes(std::move(sizes));
  found.finish(model, data);
}

template <typename T>
void extractRegression(GenericModel<T>& model, SvmData<T>& data, const SolverProblem<T>& problem,
                       const SmoSolution& solution) {
  const std::uint64_t n = data.sampleCount();
  VectorCollector<T> found(n);
  for (std::uint64_t i = 0; i < n; ++i)
    if (problem.alpha[i] != 0) found.add(i, problem.alpha[i]);
  model.setRho(single<T>(solution.rho));
  found.finish(model, data);
}

template void extractTwoClass(GenericModel<double>&, SvmData<double>&, SolverProblem<double>&&,
                              const SmoSolution&);
template void extractRegression(GenericModel<double>&, SvmData<double>&,
                                const SolverProblem<double>&, const SmoSolution&);

}  // namespace zelsvm::inline ZEL_PLATFORM
