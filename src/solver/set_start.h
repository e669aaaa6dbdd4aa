// Where a solve by working sets begins whose multipliers have sums to keep.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/set_variables.h"

namespace zelsvm {

// A part of the samples by chance, in ascending order, with the same share of each sign.
std::vector<unsigned> startSubset(const SetVariables& variables);

// Gives the part's variables their share of each sign's multipliers in the whole, in order.
void spreadTotals(const SetVariables& whole, const SetVariables& part);

// Gives each sign's multipliers to its variables with the lowest gradient at these sums, each up to
// its bound.
void fillLowest(const SetVariables& variables, std::span<const double> sums);

}  // namespace zelsvm
