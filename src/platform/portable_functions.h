// exp and log without the C library's, whose bits differ from one version and processor to the
// next: these have the same wherever multiply-adds are fused. Right to 2 units in the last place.
#pragma once

namespace zelsvm {

double portableExp(double x);
double portableLog(double x);

}  // namespace zelsvm
