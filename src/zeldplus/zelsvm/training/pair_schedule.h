// How many label pairs the platform trains at a time.
#pragma once

#include <cstdint>
#include <functional>

#include "zeldplus/zelsvm/data/matrix.h"
#include "zeldplus/zelsvm/engine/svm_context.h"

namespace zelsvm::inline ZEL_PLATFORM {

// The pairs of a training.
struct PairLoad {
  std::uint64_t pairs = 0;
  std::uint64_t largest = 0;  // samples of the largest pair
  double kernelValues = 0;    // in the kernel matrices of all
};

// So many members should share the pairs; 1 where they are better trained one after the other.
template <typename T>
unsigned pairsAtOnce(const SvmSettings<T>& settings, const zelmag::AbstractMatrix<T>& samples,
                     const PairLoad& load);

// Calls member(0 … count - 1) on a thread each, member(0) on the calling one, and waits for all;
// where fewer threads are to be had not all are called. Nothing may be thrown.
void runMembers(unsigned count, const std::function<void(unsigned)>& member);

}  // namespace zelsvm::inline ZEL_PLATFORM
