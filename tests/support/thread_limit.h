// How many threads code under test may use.
#pragma once

#include <omp.h>

namespace zeltest {

// Threads that the calling thread's loops may use while this lives.
class ThreadLimit {
 public:
  explicit ThreadLimit(int threads) : before(omp_get_max_threads()) {
    omp_set_num_threads(threads);
  }
  ~ThreadLimit() { omp_set_num_threads(before); }
  ThreadLimit(const ThreadLimit&) = delete;
  ThreadLimit& operator=(const ThreadLimit&) = delete;

 private:
  int before;
};

}  // namespace zeltest
