#include "arrays.h"

#include <initializer_list>
#include <span>
#include <utility>
#include <variant>

namespace zelpy {
namespace {

template <typename Number>
bool holds(const nb::ndarray<nb::ro>& array) {
  return array.dtype() == nb::dtype<Number>();
}

template <typename Number>
zelsvm::Table<Number> tableOf(const nb::ndarray<nb::ro>& array) {
  return {static_cast<const Number*>(array.data()), array.shape(0), array.shape(1),
          static_cast<std::ptrdiff_t>(array.stride(0)),
          static_cast<std::ptrdiff_t>(array.stride(1))};
}

template <typename Number>
std::span<const Number> spanOf(const nb::ndarray<nb::ro>& array) {
  if (array.stride(0) != 1 && array.shape(0) > 1)
    throw nb::value_error("The arrays of sparse rows must have no gaps.");
  return {static_cast<const Number*>(array.data()), array.shape(0)};
}

// One of two types of numbers.
template <typename First, typename Second, typename Use>
auto byType(const nb::ndarray<nb::ro>& array, const Use& use) {
  if (holds<First>(array)) return use(First{});
  if (holds<Second>(array)) return use(Second{});
  throw nb::type_error("An array has numbers of another type than the engine reads.");
}

template <typename First, typename Second>
auto spanOfEither(const nb::ndarray<nb::ro>& array) {
  return byType<First, Second>(
      array, [&](auto number) -> std::variant<std::span<const First>, std::span<const Second>> {
        return spanOf<decltype(number)>(array);
      });
}

template <typename Number>
nb::ndarray<nb::numpy, Number> owned(std::vector<Number>&& values,
                                     std::initializer_list<std::size_t> shape) {
  auto* kept = new std::vector<Number>(std::move(values));
  const nb::capsule owner(kept,
                          [](void* p) noexcept { delete static_cast<std::vector<Number>*>(p); });
  return {kept->data(), shape, owner};
}

}  // namespace

SamplesOfArrays denseSamples(const nb::ndarray<nb::ro, nb::ndim<2>>& values) {
  const nb::ndarray<nb::ro> array(values);
  return byType<double, float>(array, [&](auto number) {
    return SamplesOfArrays{{array}, zelsvm::Samples::dense(tableOf<decltype(number)>(array))};
  });
}

SamplesOfArrays kernelSamples(const nb::ndarray<nb::ro, nb::ndim<2>>& values,
                              bool ofSupportVectors) {
  const nb::ndarray<nb::ro> array(values);
  const auto columns = ofSupportVectors ? zelsvm::KernelColumns::supportVectors
                                        : zelsvm::KernelColumns::trainingSamples;
  return byType<double, float>(array, [&](auto number) {
    return SamplesOfArrays{{array},
                           zelsvm::Samples::kernel(tableOf<decltype(number)>(array), columns)};
  });
}

SamplesOfArrays sparseSamples(const nb::ndarray<nb::ro, nb::ndim<1>>& values,
                              const nb::ndarray<nb::ro, nb::ndim<1>>& columns,
                              const nb::ndarray<nb::ro, nb::ndim<1>>& offsets,
                              std::size_t features) {
  std::vector<nb::ndarray<nb::ro>> arrays{nb::ndarray<nb::ro>(values), nb::ndarray<nb::ro>(columns),
                                          nb::ndarray<nb::ro>(offsets)};
  const zelsvm::SparseArrays rows{.values = spanOfEither<double, float>(arrays[0]),
                                  .columns = spanOfEither<std::int32_t, std::int64_t>(arrays[1]),
                                  .rowOffsets = spanOfEither<std::int32_t, std::int64_t>(arrays[2]),
                                  .features = features};
  return {std::move(arrays), zelsvm::Samples::csr(rows)};
}

Doubles toArray(std::vector<double>&& values) {
  const std::size_t size = values.size();
  return owned(std::move(values), {size});
}

Doubles toArray(std::vector<double>&& values, std::size_t columns) {
  const std::size_t rows = columns == 0 ? 0 : values.size() / columns;
  return owned(std::move(values), {rows, columns});
}

Integers toArray(const std::vector<std::size_t>& values) {
  return owned(std::vector<std::int64_t>(values.begin(), values.end()), {values.size()});
}

}  // namespace zelpy
