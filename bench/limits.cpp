// What this machine can do with all its threads, as one line of JSON: memory copies (bytes read and
// written), matrix products, exponentials. Best of several runs each, as limits are.

#include <cblas.h>
#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <vector>

#include "base/vectors.h"
#include "platform/host/block/block_sweeps.h"

namespace {

constexpr int timedRuns = 7;

double bestSeconds(const std::function<void()>& work) {
  work();
  double best = 1e300;
  for (int run = 0; run < timedRuns; ++run) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    best = std::min(best, took.count());
  }
  return best;
}

// Bytes a second that copying moves, both ways; every thread copies its own arrays again and again.
double copyRate(std::size_t bytesPerThread, int repeats) {
  const int threads = omp_get_max_threads();
  std::vector<std::vector<char>> from(static_cast<std::size_t>(threads));
  std::vector<std::vector<char>> to(from.size());
  const auto onEachThread =
      [&](const std::function<void(std::vector<char>&, std::vector<char>&)>& work) {
#pragma omp parallel num_threads(threads)
        {
          const auto t = static_cast<std::size_t>(omp_get_thread_num());
          work(from[t], to[t]);
        }
      };
  onEachThread([&](std::vector<char>& source, std::vector<char>& target) {
    source.assign(bytesPerThread, 1);
    target.assign(bytesPerThread, 0);
  });
  const double seconds = bestSeconds([&] {
    onEachThread([&](std::vector<char>& source, std::vector<char>& target) {
      for (int k = 0; k < repeats; ++k) {
        source[static_cast<std::size_t>(k)] = static_cast<char>(k);
        std::memcpy(target.data(), source.data(), bytesPerThread);
      }
    });
  });
  return 2.0 * static_cast<double>(bytesPerThread) * repeats * threads / seconds;
}

double productRate() {
  constexpr int n = 1536;
  const std::vector<double> a(std::size_t{n} * n, 0.5);
  std::vector<double> c(a.size());
  const double seconds = bestSeconds([&] {
    cblas_dgemm(CblasColMajor, CblasTrans, CblasNoTrans, n, n, n, 1, a.data(), n, a.data(), n, 0,
                c.data(), n);
  });
  if (c.back() != 0.25 * n) {
    std::fprintf(stderr, "the matrix product is wrong\n");
    std::exit(1);
  }
  return 2.0 * n * n * n / seconds;
}

// The vector exponential that the kernels call, within the first-level cache.
double exponentialRate() {
  constexpr std::size_t count = 1024;
  constexpr int repeats = 2000;
  const double seconds = bestSeconds([] {
#pragma omp parallel
    {
      zelsvm::HostVector<double> values(count);
      zelsvm::HostVector<double> norms(count);
      values.fill(0.3);
      norms.fill(1.0);
      for (int k = 0; k < repeats; ++k)
        zelsvm::blockSweeps<double>().transform[zelsvm::SVM_KERNEL_RADIAL](
            {0.5, 0, 0}, values.data(), norms.data(), count, 1.0);
    }
  });
  return static_cast<double>(count) * repeats * omp_get_max_threads() / seconds;
}

}  // namespace

int main() {
  const double memory = copyRate(std::size_t{128} << 20, 1);
  const double cache = copyRate(std::size_t{2} << 20, 100);
  std::printf(
      "{\"threads\": %d, \"copy_bytes_per_s\": %.4g, \"cached_copy_bytes_per_s\": %.4g, "
      "\"product_flops\": %.4g, \"exponentials_per_s\": %.4g}\n",
      omp_get_max_threads(), memory, cache, productRate(), exponentialRate());
}
