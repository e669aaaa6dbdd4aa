#include "zeldplus/zelsvm/model/decision_functions.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/host/blas.h"
#include "platform/host/dense_product.h"
#include "platform/host/parallel.h"
#include "zeldplus/zelsvm/engine/host/kernel_transform.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

// A tile of kernel values stays in the second-level cache from its transform to its product.
constexpr std::uint64_t tileSamples = 32;
constexpr std::uint64_t tileVectors = 512;
constexpr double nanosecondsPerMultiplication = 0.06;

using Transform = void (*)(const KernelConstants&, double*, const double*, std::uint64_t, double);

Transform transformOf(SVM_KERNEL kernel) {
  switch (kernel) {
    case SVM_KERNEL_POLYNOMIAL:
      return transformProducts<SVM_KERNEL_POLYNOMIAL>;
    case SVM_KERNEL_RADIAL:
      return transformProducts<SVM_KERNEL_RADIAL>;
    case SVM_KERNEL_SIGMOID:
      return transformProducts<SVM_KERNEL_SIGMOID>;
    case SVM_KERNEL_LINEAR:
    case SVM_KERNEL_UNSUPPORTED:
      break;
  }
  return transformProducts<SVM_KERNEL_LINEAR>;
}

// A vector has one coefficient per other class, side by side, so that a class's kernel values times
// its coefficients are its share in the functions of all its pairs.
struct Block {
  std::vector<std::uint64_t> starts;  // of the classes among the vectors
  Transform transform;
  KernelConstants constants;
  const double* svNorms;
  const double* coefficients;
  const double* rho;
  const double* testNorms;
  double* products;
  std::uint64_t pitch;
  double* values;
  std::uint64_t samples;

  [[nodiscard]] std::uint64_t classes() const { return starts.size() - 1; }

  // sums[c + j * (end - begin)] for samples begin + c and the class's coefficients j.
  void addUp(std::uint64_t cls, std::uint64_t begin, std::uint64_t end, double* sums) const {
    const std::uint64_t others = classes() - 1;
    const int rows = static_cast<int>(end - begin);
    std::fill_n(sums, (end - begin) * others, 0.0);
    for (std::uint64_t v = starts[cls]; v < starts[cls + 1]; v += tileVectors) {
      const std::uint64_t count = std::min(tileVectors, starts[cls + 1] - v);
      for (std::uint64_t c = begin; c < end; ++c)
        transform(constants, products + c * pitch + v, svNorms + v, count, testNorms[c]);
      const bool pair = others == 1;
      zel::denseProduct({true, !pair, rows, static_cast<int>(others), static_cast<int>(count), 1.0,
                         products + begin * pitch + v, static_cast<int>(pitch),
                         coefficients + v * others, static_cast<int>(pair ? count : others), 1.0,
                         sums, rows});
    }
  }

  // The first of a pair's classes starts its sum, the second ends it.
  void share(std::uint64_t cls, std::uint64_t begin, std::uint64_t end, const double* sums) const {
    for (std::uint64_t j = 0; j + 1 < classes(); ++j, sums += end - begin) {
      const bool first = cls <= j;
      const std::uint64_t f =
          first ? pairIndex(cls, j + 1, classes()) : pairIndex(j, cls, classes());
      double* const target = values + f * samples + begin;
      for (std::uint64_t c = 0; c < end - begin; ++c)
        target[c] = first ? sums[c] : target[c] + sums[c] - rho[f];
    }
  }
};

}  // namespace

template <typename T>
DecisionFunctions<T>::DecisionFunctions(const SvmContext<T>& params, const GenericModel<T>& model)
    : params(&params),
      model(&model),
      svCount(model.vectors().rows()),
      functionCount(model.rho().size()),
      svNorms(model.vectors().rowNorms()),
      coefficients(model.coefficients()) {}

template <typename T>
std::uint64_t DecisionFunctions<T>::bytesPerSample() const {
  return coefficients.size() / svCount * sizeof(T);
}

template <typename T>
void DecisionFunctions<T>::evaluate(zel::DeviceVector<T>& values, zel::DeviceVector<T>& products,
                                    std::uint64_t pitch, const zel::DeviceVector<T>& testNorms,
                                    std::uint64_t samples) {
  zellas::zelSafeBlasCall(zel::prepareBlas() ? CUBLAS_STATUS_SUCCESS : CUBLAS_STATUS_ALLOC_FAILED);
  // For regression the second class has no vectors.
  std::vector<std::uint64_t> starts{0, svCount, svCount};
  if (params->problemKind != ProblemKind::regression) {
    const auto& classes = model->classStarts();
    starts.assign(classes.data(), classes.data() + classes.size());
  }
  const Block block{std::move(starts),
                    transformOf(params->kernelType),
                    publishedConstants(),
                    svNorms.data(),
                    coefficients.data(),
                    model->rho().data(),
                    testNorms.data(),
                    products.data(),
                    pitch,
                    values.data(),
                    samples};
  const std::uint64_t others = block.classes() - 1;
  partials.resize(others * samples);
  const double perVector = transformNanoseconds<SVM_KERNEL_RADIAL> +
                           nanosecondsPerMultiplication * static_cast<double>(others);
  zel::forEachChunk(samples, tileSamples, perVector * static_cast<double>(svCount),
                    [&](std::uint64_t begin, std::uint64_t end) {
                      T* const sums = partials.data() + begin * others;
                      for (std::uint64_t cls = 0; cls < block.classes(); ++cls) {
                        block.addUp(cls, begin, end, sums);
                        block.share(cls, begin, end, sums);
                      }
                    });
}

template class DecisionFunctions<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
