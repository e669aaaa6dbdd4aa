// The vectorised loops in every build that this processor can run.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "platform/host/isa.h"
#include "platform/host/sweeps/smo_sweeps.h"
#include "rules/kernel_rules.h"

namespace zeltest {

struct IsaTables {
  std::string name;
  const zelsvm::SmoSweeps* smo;
  double (*fma)(double, double, double);  // what the build takes for a * b + c
};

inline std::vector<IsaTables> runnableTables() {
  const auto plain = [](double a, double b, double c) {
    return zelsvm::fusedMultiplyAdd(a, b, c);  // as this file is compiled: baseline
  };
  std::vector<IsaTables> tables{{"baseline", &zelsvm::baseline::smoSweepTable, plain}};
#ifdef __x86_64__
  const auto fused = [](double a, double b, double c) { return std::fma(a, b, c); };
  if (zel::processorIsa() >= zel::Isa::avx2)
    tables.push_back({"avx2", &zelsvm::avx2::smoSweepTable, fused});
  if (zel::processorIsa() >= zel::Isa::avx512)
    tables.push_back({"avx512", &zelsvm::avx512::smoSweepTable, fused});
#endif
  return tables;
}

// Equal to the bit, any NaN for any other.
inline bool sameNumber(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b && std::signbit(a) == std::signbit(b);
}

}  // namespace zeltest
