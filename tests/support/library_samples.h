// Test samples as the library takes them.
#pragma once

#include <zelsvm/zelsvm.h>

#include <utility>

#include "support/samples.h"

namespace zeltest {

// Looks at the samples.
inline zelsvm::Samples dense(const Samples& samples) {
  return zelsvm::Samples::dense(samples.values, samples.cols);
}

inline zelsvm::Samples sparse(const Samples& samples) {
  CsrArrays csr = compressed(samples);
  return zelsvm::Samples::csr(std::move(csr.values), std::move(csr.columns), std::move(csr.offsets),
                              samples.cols);
}

}  // namespace zeltest
