// Two numbers that bound something.
#pragma once

namespace zel {

struct Interval {
  double lower;
  double upper;
};

}  // namespace zel
