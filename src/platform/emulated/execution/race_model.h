// What orders device threads, told to the thread sanitizer. In other builds nothing is told. What
// runs device threads is compiled without the sanitizer, which so sees their accesses only.
#pragma once

#ifdef ZEL_RACES_SOUGHT
extern "C" {
void __tsan_acquire(void* place);
void __tsan_release(void* place);
}
#endif

namespace zel::device {

#ifdef ZEL_RACES_SOUGHT
inline constexpr bool racesAreSought = true;

// What the caller has done comes before what those do who observe the place from now on.
inline void publish(void* place) { __tsan_release(place); }
inline void observe(void* place) { __tsan_acquire(place); }
#else
inline constexpr bool racesAreSought = false;

inline void publish(void* /*place*/) {}
inline void observe(void* /*place*/) {}
#endif

}  // namespace zel::device
