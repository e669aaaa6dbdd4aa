#include "platform/host/isa/lanes.h"
#include "platform/host/isa/vector_math.h"
#include "platform/host/sweeps/portable_table.h"

namespace zelsvm::ZEL_ISA {
namespace {

using D = Lanes<double>;

double expOf(double x) { return hn::GetLane(exp(D::all(x)).v); }
double logOf(double x) { return hn::GetLane(log(D::all(x)).v); }

}  // namespace

extern const PortableTable portableFunctions;
constinit const PortableTable portableFunctions{expOf, logOf};

}  // namespace zelsvm::ZEL_ISA
