// The variables that violate optimality most, as a guess at those that a solver will choose next.
#pragma once

#include <cstdint>
#include <vector>

#include "zeldplus/zelsvm/engine/host/smo_sweeps.h"

namespace zelsvm::inline ZEL_PLATFORM {

// v and the state of `halves` times `samples` variables, the halves stride apart.
struct VariablesView {
  const double* v;
  const SmoState* states;
  std::uint64_t samples;
  std::uint64_t stride;
  unsigned halves;
};

class Violators {
 public:
  // Fills samples with at most `most`, those of both sets in turn and the strongest of each first,
  // without those that are known.
  void collect(std::vector<std::uint64_t>& samples, unsigned most,
               const std::vector<std::uint32_t>& isKnown, const VariablesView& variables);

 private:
  struct Violator {
    double strength;
    std::uint64_t sample;
  };
  // The strongest of one set, descending; upper: v itself is the strength, else -v.
  void strongest(std::vector<Violator>& found, unsigned most, bool upper,
                 const std::vector<std::uint32_t>& isKnown, const VariablesView& variables);

  std::vector<Violator> found[2];
};

}  // namespace zelsvm::inline ZEL_PLATFORM
