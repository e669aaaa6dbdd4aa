// Python's arrays as the library's samples, and the library's results as arrays.
#pragma once

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>
#include <zelsvm/zelsvm.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zelpy {

namespace nb = nanobind;

// Samples together with the arrays that they borrow.
struct SamplesOfArrays {
  std::vector<nb::ndarray<nb::ro>> arrays;
  zelsvm::Samples samples;
};

// float32 or float64, any strides.
SamplesOfArrays denseSamples(const nb::ndarray<nb::ro, nb::ndim<2>>& values);
SamplesOfArrays kernelSamples(const nb::ndarray<nb::ro, nb::ndim<2>>& values,
                              bool ofSupportVectors);
// Compressed sparse rows; int32 or int64 columns and offsets.
SamplesOfArrays sparseSamples(const nb::ndarray<nb::ro, nb::ndim<1>>& values,
                              const nb::ndarray<nb::ro, nb::ndim<1>>& columns,
                              const nb::ndarray<nb::ro, nb::ndim<1>>& offsets,
                              std::size_t features);

// NumPy arrays that own their values; of two dimensions where columns are told.
using Doubles = nb::ndarray<nb::numpy, double>;
using Integers = nb::ndarray<nb::numpy, std::int64_t>;
Doubles toArray(std::vector<double>&& values);
Doubles toArray(std::vector<double>&& values, std::size_t columns);
Integers toArray(const std::vector<std::size_t>& values);

}  // namespace zelpy
