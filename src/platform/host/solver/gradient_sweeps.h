// The gradient of a solve as the processor keeps it, and the sweeps that search and update it.
#pragma once

#include <cstdint>
#include <span>

#include "base/vectors.h"
#include "platform/host/rows/row_source.h"
#include "platform/host/sweeps/smo_sweeps.h"
#include "rules/smo_records.h"

namespace zelsvm {

// What the sweeps read is compact: v = -y times the gradient, and a byte for what the selections
// want to know, padded, and for a regression each half's states apart from the other's. A gradient
// update selects the next first index in the same pass.
class GradientSweeps {
 public:
  // nu: selections are made apart for the two signs. unitDiagonal: K(x, x) is always 1.
  GradientSweeps(bool nu, bool unitDiagonal) : nu(nu), unitDiagonal(unitDiagonal) {}

  // As many variables as samples, or twice as many, with the gradient's start values. All states
  // are to be set then.
  void assign(std::uint64_t samples, std::span<const signed char> signs,
              std::span<const double> gradient);
  // Adds kernel columns times weights, the multipliers times their signs.
  void addColumns(const KernelColumns& columns, const double* weights);
  // Of all variables: in neither set.
  void clearStates();
  // While nothing is selected, or of a moved pair before its update.
  void setState(unsigned variable, SmoState state);

  // The extremes over the sets by group (core: the same twice); index noIndex for none.
  void select(SmoSelection<double>& selection, SmoSelection<double>& second);
  // The variable of the best gain, noIndex for none.
  [[nodiscard]] unsigned selectSecond(const LowerQuery& query) const;
  void update(const GradientStep& step);

  [[nodiscard]] std::uint64_t sampleOf(unsigned variable) const {
    return variable < samples ? variable : variable - samples;
  }
  // v of a variable.
  [[nodiscard]] double valueOf(unsigned variable) const {
    return swept.v[sampleOf(variable)] + offsetOf(variable);
  }
  [[nodiscard]] const SweptVariables& variables() const { return swept; }
  [[nodiscard]] unsigned halfCount() const { return halves; }

 private:
  [[nodiscard]] double offsetOf(unsigned variable) const {
    return swept.offset[variable < samples ? 0 : 1];
  }
  [[nodiscard]] unsigned variableAt(unsigned half, std::int64_t position) const {
    return static_cast<unsigned>(half * samples + static_cast<std::uint64_t>(position));
  }
  [[nodiscard]] std::uint64_t chunkLength() const;
  template <typename Body>
  void forEachChunk(const Body& body) const;
  template <typename Sweep>
  void sweepUpper(const Sweep& sweep);

  bool nu;
  bool unitDiagonal;
  std::uint64_t samples = 0;
  unsigned halves = 1;
  std::uint64_t stride = 0;  // from one half to the next
  std::uint64_t grain = 0;   // of a half, in a chunk
  std::uint64_t chunks = 0;
  HostVector<double> v;
  HostVector<SmoState> states;
  SweptVariables swept{};
  bool selected = false;
  SmoSelection<double> chosen[2]{};
};

}  // namespace zelsvm
