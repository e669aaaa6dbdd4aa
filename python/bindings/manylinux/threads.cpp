// The two questions that the engine asks of the compiler's thread runtime, which not every system
// has.
#include <omp.h>
#include <sched.h>

#include <cstdlib>

extern "C" {

int omp_get_num_procs() noexcept {
  cpu_set_t usable;
  CPU_ZERO(&usable);
  return sched_getaffinity(0, sizeof usable, &usable) == 0 ? CPU_COUNT(&usable) : 1;
}

int omp_get_max_threads() noexcept {
  static const long wanted = [] {
    const char* text = std::getenv("OMP_NUM_THREADS");
    return text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  }();
  constexpr long most = 1 << 16;
  return wanted > 0 ? static_cast<int>(wanted < most ? wanted : most) : omp_get_num_procs();
}

}  // extern "C"
