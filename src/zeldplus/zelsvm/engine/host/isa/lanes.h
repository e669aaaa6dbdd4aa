// One loop body for whole packs and for the leftover variables: value types of both widths, and the
// two ways to reach a variable from its position.
#pragma once

#include <cuda_runtime.h>

#include <cstdint>

#include "zeldplus/zelsvm/engine/host/isa/pack.h"
#include "zeldplus/inc/zelrule.h"

namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA {

struct Wide {
  using Value = Pack;
  using Truth = Mask;
  using Position = Mask;
  ZEL_RULE static Value all(double v) { return splat(v); }
  ZEL_RULE static Position allPositions(std::int64_t q) { return Mask{} + q; }
  ZEL_RULE static Position positionsFrom(std::uint64_t q) {
    return laneNumbers() + static_cast<std::int64_t>(q);
  }
};

struct Narrow {
  using Value = double;
  using Truth = bool;
  using Position = std::int64_t;
  ZEL_RULE static Value all(double v) { return v; }
  ZEL_RULE static Position allPositions(std::int64_t q) { return q; }
  ZEL_RULE static Position positionsFrom(std::uint64_t q) { return static_cast<std::int64_t>(q); }
};

// The label sign of variable t.
ZEL_RULE double signOf(const char2* status, std::uint64_t t) { return status[t].y; }

// Position q is variable q; shift is what its kernel row entry lies below it.
struct EveryVariable {
  std::uint64_t shift;

  template <typename L>
  ZEL_RULE typename L::Value values(const double* p, std::uint64_t q) const {
    if constexpr (sizeof(typename L::Value) > sizeof(double))
      return load(p + q);
    else
      return p[q];
  }
  template <typename L>
  ZEL_RULE typename L::Value rowValues(const double* row, std::uint64_t q) const {
    return values<L>(row, q - shift);
  }
  template <typename L>
  ZEL_RULE typename L::Truth positive(const char2* status, std::uint64_t q) const {
    if constexpr (sizeof(typename L::Value) > sizeof(double))
      return loadPositive(status + q);
    else
      return status[q].y > 0;
  }
};

// Position q is variable active[q].
struct ListedVariables {
  const unsigned* active;
  std::uint64_t samples;

  template <typename L>
  ZEL_RULE typename L::Value values(const double* p, std::uint64_t q) const {
    return gather<L>([&](std::uint64_t k) { return p[active[q + k]]; });
  }
  template <typename L>
  ZEL_RULE typename L::Value rowValues(const double* row, std::uint64_t q) const {
    return gather<L>([&](std::uint64_t k) {
      const std::uint64_t t = active[q + k];
      return row[t < samples ? t : t - samples];
    });
  }
  template <typename L>
  ZEL_RULE typename L::Truth positive(const char2* status, std::uint64_t q) const {
    return gather<L>([&](std::uint64_t k) { return signOf(status, active[q + k]); }) > 0.0;
  }

 private:
  template <typename L, typename Element>
  ZEL_RULE static typename L::Value gather(Element element) {
    if constexpr (sizeof(typename L::Value) > sizeof(double)) {
      Pack v{};
      for (int k = 0; k < lanes; ++k) v[k] = element(static_cast<std::uint64_t>(k));
      return v;
    } else {
      return element(0);
    }
  }
};

}  // namespace zelsvm::inline ZEL_PLATFORM::ZEL_ISA
