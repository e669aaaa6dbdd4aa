#include "vector_math_table.h"

#include "platform/host/isa/vector_math.h"

namespace zelsvm::ZEL_ISA {
namespace {

template <typename T, typename Function>
void apply(T* values, std::uint64_t count, Function function) {
  for (std::uint64_t i = 0; i < count; i += Lanes<T>::count)
    function(Lanes<T>::load(values + i)).store(values + i);
}

template <typename T>
void expOf(T* values, std::uint64_t count) {
  apply(values, count, [](Lanes<T> x) { return exp(x); });
}

template <typename T>
void tanhOf(T* values, std::uint64_t count) {
  apply(values, count, [](Lanes<T> x) { return tanh(x); });
}

void logOf(double* values, std::uint64_t count) {
  apply(values, count, [](Lanes<double> x) { return log(x); });
}

}  // namespace

extern const zeltest::VectorMath vectorMathTable;
constinit const zeltest::VectorMath vectorMathTable{expOf<double>, tanhOf<double>, logOf,
                                                    expOf<float>, tanhOf<float>};

}  // namespace zelsvm::ZEL_ISA
