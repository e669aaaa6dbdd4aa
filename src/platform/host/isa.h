// The instruction sets that the vectorised loops are built for.
#pragma once

namespace zel {

enum class Isa { baseline, avx2, avx512 };

// The best set that this processor and its system offer, or less where a limit asks for it.
Isa processorIsa();

// Lets tests see what older processors do: while this lives, no better set is used. One at a time,
// and not while loops run.
class IsaLimit {
 public:
  explicit IsaLimit(Isa best);
  ~IsaLimit();
  IsaLimit(const IsaLimit&) = delete;
  IsaLimit& operator=(const IsaLimit&) = delete;
};

// Of one table of loops per instruction set the one for this processor.
template <typename Table>
const Table& tableForProcessor(const Table& baseline, const Table& avx2, const Table& avx512) {
  switch (processorIsa()) {
    case Isa::avx512:
      return avx512;
    case Isa::avx2:
      return avx2;
    case Isa::baseline:
      break;
  }
  return baseline;
}

}  // namespace zel
