// Lets the module run on systems with older C libraries than the one that it was built with: what
// the newer one has under new versions is asked for under the old ones, or made here. The linker
// sends every reference to NAME to __wrap_NAME.
#include <pthread.h>
#include <sched.h>
#include <sys/stat.h>

#include <ctime>

extern "C" {

// Functions that moved or were renamed.

#define ZEL_OLD(name, as) __asm__(".symver old_" #name ", " as "@GLIBC_2.2.5")
ZEL_OLD(pthread_create, "pthread_create");
ZEL_OLD(pthread_join, "pthread_join");
ZEL_OLD(pthread_detach, "pthread_detach");
ZEL_OLD(pthread_once, "pthread_once");
ZEL_OLD(pthread_key_create, "__pthread_key_create");
ZEL_OLD(stat, "__xstat");
ZEL_OLD(lstat, "__lxstat");
ZEL_OLD(fstat, "__fxstat");
#undef ZEL_OLD

using ThreadFunction = void* (*)(void*);
int old_pthread_create(pthread_t*, const pthread_attr_t*, ThreadFunction, void*);
int old_pthread_join(pthread_t, void**);
int old_pthread_detach(pthread_t);
int old_pthread_once(pthread_once_t*, void (*)());
int old_pthread_key_create(pthread_key_t*, void (*)(void*));
int old_stat(int layout, const char*, struct stat*);
int old_lstat(int layout, const char*, struct stat*);
int old_fstat(int layout, int, struct stat*);

constexpr int statLayout = 1;  // of x86-64

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* settings,
                          ThreadFunction function, void* argument) {
  return old_pthread_create(thread, settings, function, argument);
}
int __wrap_pthread_join(pthread_t thread, void** result) {
  return old_pthread_join(thread, result);
}
int __wrap_pthread_detach(pthread_t thread) { return old_pthread_detach(thread); }
int __wrap_pthread_once(pthread_once_t* once, void (*function)()) {
  return old_pthread_once(once, function);
}
int __wrap___pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
  return old_pthread_key_create(key, destructor);
}
int __wrap_stat(const char* path, struct stat* found) { return old_stat(statLayout, path, found); }
int __wrap_lstat(const char* path, struct stat* found) {
  return old_lstat(statLayout, path, found);
}
int __wrap_fstat(int file, struct stat* found) { return old_fstat(statLayout, file, found); }
int __wrap_fstat64(int file, struct stat* found) { return old_fstat(statLayout, file, found); }

// Always "there may be several threads", the safe answer.
char __wrap___libc_single_threaded = 0;

// Waiting by another clock than that of the day was not known.
int __wrap_pthread_cond_clockwait(pthread_cond_t* condition, pthread_mutex_t* mutex,
                                  clockid_t clock, const timespec* until) {
  constexpr long second = 1'000'000'000;
  timespec now{};
  timespec wall{};
  clock_gettime(clock, &now);
  clock_gettime(CLOCK_REALTIME, &wall);
  wall.tv_sec += until->tv_sec - now.tv_sec;
  wall.tv_nsec += until->tv_nsec - now.tv_nsec;
  if (wall.tv_nsec < 0) {
    wall.tv_nsec += second;
    --wall.tv_sec;
  } else if (wall.tv_nsec >= second) {
    wall.tv_nsec -= second;
    ++wall.tv_sec;
  }
  return pthread_cond_timedwait(condition, mutex, &wall);
}

}  // extern "C"
