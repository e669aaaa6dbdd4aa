// What the blocks of a selection found.
#pragma once

#include <cstdint>
#include <cstring>

#include "platform/cuda/runtime/device_vector.h"
#include "rules/smo_records.h"

namespace zelsvm {

// Entry 0 of each array is the result. The arrays of extremes and of indices take turns, equally
// far apart, so that one copy fetches the first 16 bytes of each.
class SelectionResults {
 public:
  explicit SelectionResults(unsigned classes)
      : classes(classes), first(std::size_t{2} * classes * sizeof(SmoUpperBeta<double>)) {}

  void resize(unsigned newBlocks) {
    blocks = newBlocks;
    memory.resize(std::uint64_t{2} * classes * blocks);
  }
  [[nodiscard]] SmoUpperBeta<double>* uppers(unsigned cls) { return row(2 * cls); }
  [[nodiscard]] unsigned* indices(unsigned cls) {
    return reinterpret_cast<unsigned*>(row(2 * cls + 1));
  }
  void read() {
    zel::copyRowsToHost(first.span().data(), memory.data(), blocks * sizeof(SmoUpperBeta<double>),
                        sizeof(SmoUpperBeta<double>), std::size_t{2} * classes);
  }
  // Of what was last read.
  [[nodiscard]] SmoSelection<double> selection(unsigned cls) const {
    SmoSelection<double> selection;
    const unsigned char* const entry = &first[std::size_t{2} * cls * sizeof selection.beta];
    std::memcpy(&selection.beta, entry, sizeof selection.beta);
    std::memcpy(&selection.index, entry + sizeof selection.beta, sizeof selection.index);
    return selection;
  }

 private:
  SmoUpperBeta<double>* row(unsigned number) {
    return memory.data() + std::uint64_t{number} * blocks;
  }

  unsigned classes;
  unsigned blocks = 0;
  zel::DeviceVector<SmoUpperBeta<double>> memory;
  zel::PinnedVector<unsigned char> first;
};

}  // namespace zelsvm
