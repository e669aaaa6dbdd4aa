#include "platform/host/sweeps/transform_sweeps.h"

#include "platform/host/isa/pack.h"

namespace zelsvm::ZEL_ISA {
namespace {

// Where the function is plain arithmetic, the arguments first and then the function in packs, since
// the compiler makes none of loops within loops. Else the compiler does all in one loop.
template <typename Function>
void transform(const KernelConstants& constants, double* values, const double* norms,
               std::uint64_t n, double norm) {
  const KernelConstants c = constants;
  const auto argumentAt = [=](std::uint64_t i) {
    return Function::argument(c, values[i], norm, Function::readsNorms ? norms[i] : 0);
  };
  if constexpr (Function::isProduct) {
    return;
  } else if constexpr (Function::isArithmetic) {
#pragma omp simd
    for (std::uint64_t i = 0; i < n; ++i) values[i] = argumentAt(i);
    std::uint64_t i = 0;
    for (; i + lanes <= n; i += lanes)
      store(values + i, Function::function(c, load(values + i), splat(1.0)));
    for (; i < n; ++i) values[i] = Function::function(c, values[i], 1.0);
  } else {
#pragma omp simd
    for (std::uint64_t i = 0; i < n; ++i) values[i] = Function::function(c, argumentAt(i), 1.0);
  }
}

double dot(const double* a, const double* b, std::uint64_t n) {
  double sum = 0;
#pragma omp simd reduction(+ : sum)
  for (std::uint64_t i = 0; i < n; ++i) sum += a[i] * b[i];
  return sum;
}

template <unsigned type>
constexpr void addTransforms(TransformSweeps& table) {
  table.kernels[type] = transform<KernelFunction<static_cast<SVM_KERNEL>(type)>>;
  if constexpr (type + 1 < SVM_KERNEL_UNSUPPORTED) addTransforms<type + 1>(table);
}

constexpr TransformSweeps makeTable() {
  TransformSweeps table{{}, dot};
  addTransforms<0>(table);
  return table;
}

}  // namespace

extern const TransformSweeps transformSweepTable;
constinit const TransformSweeps transformSweepTable = makeTable();

}  // namespace zelsvm::ZEL_ISA
