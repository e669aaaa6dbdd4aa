#include "platform/host/isa.h"

#include <algorithm>

namespace zel {
namespace {

Isa detect() {
#ifdef __x86_64__
  __builtin_cpu_init();
  if (__builtin_cpu_supports("x86-64-v4")) return Isa::avx512;
  if (__builtin_cpu_supports("x86-64-v3")) return Isa::avx2;
#endif
  return Isa::baseline;
}

const Isa detected = detect();
Isa used = detected;

}  // namespace

Isa processorIsa() { return used; }

IsaLimit::IsaLimit(Isa best) { used = std::min(best, detected); }

IsaLimit::~IsaLimit() { used = detected; }

}  // namespace zel
