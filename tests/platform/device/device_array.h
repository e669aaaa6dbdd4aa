// Device memory for tests, through the runtime alone.
#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

template <typename T>
class DeviceArray {
 public:
  explicit DeviceArray(std::size_t count) : count(count) {
    EXPECT_EQ(cudaMalloc(&memory, count * sizeof(T)), cudaSuccess);
  }
  explicit DeviceArray(const std::vector<T>& values) : DeviceArray(values.size()) {
    EXPECT_EQ(cudaMemcpy(memory, values.data(), count * sizeof(T), cudaMemcpyHostToDevice),
              cudaSuccess);
  }
  ~DeviceArray() { EXPECT_EQ(cudaFree(memory), cudaSuccess); }
  DeviceArray(const DeviceArray&) = delete;
  DeviceArray& operator=(const DeviceArray&) = delete;

  [[nodiscard]] T* data() const { return memory; }
  [[nodiscard]] std::vector<T> values() const {
    std::vector<T> copy(count);
    EXPECT_EQ(cudaMemcpy(copy.data(), memory, count * sizeof(T), cudaMemcpyDeviceToHost),
              cudaSuccess);
    return copy;
  }

 private:
  std::size_t count;
  T* memory = nullptr;
};

inline constexpr double garbage = std::numeric_limits<double>::quiet_NaN();

inline std::vector<double> randomValues(std::size_t count, unsigned seed) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<double> uniform(-1, 1);
  std::vector<double> values(count);
  for (double& value : values) value = uniform(generator);
  return values;
}
