#include "platform/portable_functions.h"

#include "platform/host/sweeps/portable_table.h"

namespace zelsvm {

double portableExp(double x) { return portableTable().exp(x); }
double portableLog(double x) { return portableTable().log(x); }

}  // namespace zelsvm
