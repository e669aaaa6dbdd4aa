#include "prediction/predictor.h"

#include <algorithm>
#include <string>
#include <utility>

#include "base/errors.h"
#include "base/output/console.h"

namespace zelsvm {
namespace {

// The one vector of a model of one label has weight 0. Times an infinite kernel value that would be
// NaN.
template <typename T>
bool isConstant(const GenericModel<T>& model) {
  return model.coefficients().size() == 1 && model.coefficients()[0] == 0;
}

// For regression the second class has no vectors.
template <typename T>
std::vector<std::uint64_t> classStarts(const SvmContext<T>& context, const GenericModel<T>& model) {
  const std::uint64_t vectors = model.vectors().rows();
  if (context.problemKind == ProblemKind::regression) return {0, vectors, vectors};
  const auto& starts = model.classStarts();
  return {starts.data(), starts.data() + starts.size()};
}

// One dot per function, spread over the samples.
void showProgress(std::uint64_t functions, std::uint64_t before, std::uint64_t after,
                  std::uint64_t samples) {
  const std::uint64_t dots = functions * after / samples - functions * before / samples;
  if (zel::isVerbose() && dots != 0) zel::printMessage("%s", std::string(dots, '.').c_str());
}

}  // namespace

template <typename T>
DecisionTask decisionTask(const SvmContext<T>& context, const GenericModel<T>& model) {
  const zelmag::AbstractMatrix<T>& vectors = model.vectors();
  const HostVector<T>& coefficients = model.coefficients();
  const HostVector<T>& rho = model.rho();
  return {.vectors = &vectors,
          .kernel = context.kernelSettings(vectors.features().count()),
          .classStarts = classStarts(context, model),
          .coefficients = {coefficients.data(), coefficients.size()},
          .rho = {rho.data(), rho.size()}};
}

template <typename T>
GenericPredictor<T>::GenericPredictor(const SvmContext<T>& context, const GenericModel<T>& model)
    : context(&context),
      model(&model),
      functions(model.rho().size()),
      ownMachine(context.machine.makePredictor(decisionTask(context, model))),
      machine(ownMachine.get()) {}

template <typename T>
GenericPredictor<T>::GenericPredictor(const SvmContext<T>& context, const GenericModel<T>& model,
                                      PredictorMachine& machine)
    : context(&context), model(&model), functions(model.rho().size()), machine(&machine) {}

template <typename T>
void GenericPredictor<T>::predict(HostVector<T>& output, const zelmag::AbstractMatrix<T>& test) {
  if (test.cols() < model->vectors().cols())
    throw zel::RuntimeException("The test samples have fewer features than the support vectors.");
  if (context->kernelType == SVM_KERNEL_PRECOMPUTED && test.kernelValues() == nullptr)
    throw zel::AppException("This model takes kernel values, not features.");
  output.fill(0);
  context->problemKind == ProblemKind::regression ? predictValues(output, test)
                                                  : predictPairs(output, test);
  if (zel::isVerbose()) zel::printMessage("\n");
}

template <typename T>
void GenericPredictor<T>::predictValues(HostVector<T>& output,
                                        const zelmag::AbstractMatrix<T>& test) {
  forEachBlock(test, [&](std::uint64_t first, std::uint64_t count, const T* values) {
    for (std::uint64_t c = 0; c < count; ++c) output.set(first + c, values[c]);
  });
  for (auto* handler : handlers) handler->handle(output, output, *model);
}

template <typename T>
void GenericPredictor<T>::predictPairs(HostVector<T>& output,
                                       const zelmag::AbstractMatrix<T>& test) {
  const std::uint64_t n = output.size();
  HostVector<T> decisionValues(functions * n);
  forEachBlock(test, [&](std::uint64_t first, std::uint64_t count, const T* values) {
    for (std::uint64_t f = 0; f < functions; ++f)
      std::copy_n(values + f * count, count, decisionValues.at(f * n + first));
  });
  if (isConstant(*model)) decisionValues.fill(-model->rho()[0]);
  for (auto* handler : handlers) handler->handle(output, decisionValues, *model);
}

template <typename T>
template <typename Take>
void GenericPredictor<T>::forEachBlock(const zelmag::AbstractMatrix<T>& test, Take take) {
  const std::uint64_t n = test.rows();
  const std::uint64_t blockSize = machine->blockSize(test);
  HostVector<T> values(functions * std::min(blockSize, n));
  for (std::uint64_t start = 0; start < n; start += blockSize) {
    const std::uint64_t count = std::min(blockSize, n - start);
    machine->decide(test, start, count, values.data());
    take(start, count, values.data());
    showProgress(functions, start, start + count, n);
  }
}

template DecisionTask decisionTask(const SvmContext<double>&, const GenericModel<double>&);
template class GenericPredictor<double>;

}  // namespace zelsvm
