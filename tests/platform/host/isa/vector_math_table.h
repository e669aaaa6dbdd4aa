// The functions of lanes in every build, over aligned arrays of whole vectors.
#pragma once

#include <cstdint>

namespace zeltest {

struct VectorMath {
  void (*exp)(double* values, std::uint64_t count);
  void (*tanh)(double* values, std::uint64_t count);
  void (*log)(double* values, std::uint64_t count);
  void (*floatExp)(float* values, std::uint64_t count);
  void (*floatTanh)(float* values, std::uint64_t count);
};

}  // namespace zeltest

namespace zelsvm {

#ifdef __x86_64__
namespace avx512 {
extern const zeltest::VectorMath vectorMathTable;
}
namespace avx2 {
extern const zeltest::VectorMath vectorMathTable;
}
#endif
namespace baseline {
extern const zeltest::VectorMath vectorMathTable;
}

}  // namespace zelsvm
