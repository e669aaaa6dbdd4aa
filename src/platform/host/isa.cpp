#include "platform/host/isa.h"

namespace zel::inline ZEL_PLATFORM {
namespace {

Isa detect() {
#ifdef __x86_64__
  __builtin_cpu_init();
  if (__builtin_cpu_supports("x86-64-v4")) return Isa::avx512;
  if (__builtin_cpu_supports("x86-64-v3")) return Isa::avx2;
#endif
  return Isa::baseline;
}

}  // namespace

Isa processorIsa() {
  static const Isa isa = detect();
  return isa;
}

}  // namespace zel::inline ZEL_PLATFORM
