// Functions of single numbers, built once per instruction set.
#pragma once

namespace zelsvm {

struct PortableTable {
  double (*exp)(double x);
  double (*log)(double x);
};

// The functions for this processor.
const PortableTable& portableTable();

#ifdef __x86_64__
namespace avx512 {
extern const PortableTable portableFunctions;
}
namespace avx2 {
extern const PortableTable portableFunctions;
}
#endif
namespace baseline {
extern const PortableTable portableFunctions;
}

}  // namespace zelsvm
