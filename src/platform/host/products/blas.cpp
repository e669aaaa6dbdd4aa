#include "platform/host/products/blas.h"

#include <dlfcn.h>
#include <semaphore.h>

#include <cstdlib>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/memory.h"
#include "platform/host/products/blas_use.h"
#include "platform/system/available_memory.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

// What OpenBLAS maps: itself with its libraries, and a buffer for each thread of its own and each
// that calls it. It goes on asking for ever for a buffer that it cannot have, so that all must fit
// before it is loaded.
constexpr std::uint64_t imageBytes = std::uint64_t{48} << 20;
constexpr std::uint64_t bufferBytes = std::uint64_t{128} << 20;
// What our products touch of a buffer, at most.
constexpr std::uint64_t touchedBytes = std::uint64_t{16} << 20;

Blas loaded{};
sem_t freeBuffers;

void requireBlasMemory(int threads) {
  const auto buffers = static_cast<std::uint64_t>(threads) + 1;
  const std::uint64_t mapped = imageBytes + buffers * bufferBytes;
  const std::uint64_t touched = imageBytes + buffers * touchedBytes;
  if (zel::freeAddressSpace() >= mapped && zel::availableHostMemory() >= touched) return;
  throw std::runtime_error("Not enough memory for the linear algebra library: it takes " +
                           std::to_string(mapped >> 20) + " MB of address space and up to " +
                           std::to_string(touched >> 20) + " MB of memory.");
}

// An environment variable set for a while.
class TemporaryVariable {
 public:
  TemporaryVariable(const char* name, const char* value) : name(name) {
    if (const char* const before = std::getenv(name)) old = before;
    ::setenv(name, value, 1);
  }
  ~TemporaryVariable() { old ? ::setenv(name, old->c_str(), 1) : ::unsetenv(name); }
  TemporaryVariable(const TemporaryVariable&) = delete;
  TemporaryVariable& operator=(const TemporaryVariable&) = delete;

 private:
  const char* name;
  std::optional<std::string> old;
};

// The flavour that it was built for, else what the system's loader finds.
void* openLibrary() {
  // Else it prepares itself for as many threads as there are processors.
  const TemporaryVariable shared("OMP_NUM_THREADS", "1");
  const TemporaryVariable own("OPENBLAS_NUM_THREADS", "1");
  void* const library = ::dlopen(ZEL_BLAS_FOLDER "/" ZEL_BLAS_NAME, RTLD_NOW | RTLD_LOCAL);
  return library != nullptr ? library : ::dlopen(ZEL_BLAS_NAME, RTLD_NOW | RTLD_LOCAL);
}

[[noreturn]] void throwLoadError() {
  throw std::runtime_error(std::string("The linear algebra library cannot be loaded: ") +
                           ::dlerror() + ".");
}

template <typename Function>
Function find(void* library, const char* name) {
  const auto function = reinterpret_cast<Function>(::dlsym(library, name));
  if (function == nullptr) throwLoadError();
  return function;
}

// Buffers that were taken once serve all later calls.
void reserveBuffers(void* library, int count) {
  const auto allocate = find<void* (*)(int)>(library, "blas_memory_alloc");
  const auto release = find<void (*)(void*)>(library, "blas_memory_free");
  std::vector<void*> buffers(static_cast<std::size_t>(count));
  for (void*& buffer : buffers) buffer = allocate(0);
  for (void* const buffer : buffers) release(buffer);
}

}  // namespace

void requireBlas() {
  static std::mutex lock;
  const std::scoped_lock locked(lock);
  if (loaded.dgemm != nullptr) return;
  const int threads = zel::threadCount();
  requireBlasMemory(threads);
  const SingleThread single;  // the setting of an OpenBLAS may be the runtime's own
  void* const library = openLibrary();
  if (library == nullptr) throwLoadError();
  find<void (*)(int)>(library, "openblas_set_num_threads")(1);
  reserveBuffers(library, threads);
  ::sem_init(&freeBuffers, 0, static_cast<unsigned>(threads));
  loaded = {find<decltype(Blas::dgemv)>(library, "cblas_dgemv"),
            find<decltype(Blas::dgemm)>(library, "cblas_dgemm")};
}

BlasUse::BlasUse() {
  while (::sem_wait(&freeBuffers) != 0) {
    // a signal came
  }
}

BlasUse::~BlasUse() { ::sem_post(&freeBuffers); }

const Blas* BlasUse::operator->() const { return &loaded; }

}  // namespace zelsvm
