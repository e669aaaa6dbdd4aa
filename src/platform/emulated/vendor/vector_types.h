// The vendor's small vectors.
#pragma once

struct char2 {
  signed char x, y;
};
struct int2 {
  int x, y;
};
struct double2 {
  double x, y;
};
struct dim3 {
  unsigned x = 1, y = 1, z = 1;
};
