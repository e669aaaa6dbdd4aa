// Which solver a problem gets, and how large its working sets are. Both follow from the problem
// alone, so that results are the same with any threads, cache and machine.
#pragma once

#include <cstdint>

#include "parameters/svm_context.h"
#include "platform/set_machine.h"

namespace zelsvm {

// Whether working sets solve a problem of so many samples faster than the two-variable method.
bool worksBySets(SVM_TYPE type, std::uint64_t samples);

// Samples of a working set while so many variables are free.
std::uint64_t setSize(std::uint64_t samples, std::uint64_t freeVariables);

// Of kernel rows, until the sums of the samples that decide are made exact.
SetPrecision rowPrecision(SVM_KERNEL kernel);

// Whether the solution of a part of the problem is worth its time as a start.
bool startsFromSubset(SVM_TYPE type);

// Whether steps in the subspace of the last sets' steps pay after so many sets.
bool tiesSets(std::uint32_t sets);

}  // namespace zelsvm
