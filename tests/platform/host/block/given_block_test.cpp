#include "platform/host/block/given_block.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numeric>

#include "base/errors.h"
#include "base/vectors.h"
#include "data/kernel_matrix.h"
#include "platform/host/block/kernel_block.h"
#include "support/temp_file.h"

namespace zelsvm {
namespace {

// K(i, j) is the number i + j of a list: symmetric, and large without taking memory.
constexpr std::uint64_t samples = 9001;
constexpr KernelSettings given{SVM_KERNEL_PRECOMPUTED, 1, 0, 0};

std::vector<float> listed() {
  std::vector<float> numbers(2 * samples);
  for (std::uint64_t k = 0; k < numbers.size(); ++k)
    numbers[k] = static_cast<float>(k * 7919 % 61) - 30;
  return numbers;
}

// Whole numbers, so that no sum rounds.
template <typename T>
void expectGathered() {
  const std::vector<float> numbers = listed();
  const zelmag::StridedNumbers<float> strided{numbers.data(), 1, 1};
  // Row k of the subset is sample 2 k + 1; a prediction may have the columns in another order.
  zel::IndexList<> odd(samples / 2);
  for (std::uint64_t k = 0; k < odd.size(); ++k) odd[k] = 2 * k + 1;
  std::vector<std::uint64_t> columnOf(samples);
  for (std::uint64_t i = 0; i < samples; ++i) columnOf[i] = samples - 1 - i;
  const auto tested = std::make_shared<zelmag::KernelTable<float>>(strided, std::move(columnOf));
  const zelmag::KernelMatrix test(tested, samples, 70);
  const zelmag::KernelMatrix columns(odd, samples);

  KernelBlock<T> block;
  block.assign(SampleChoice(columns), given);
  const std::uint64_t pitch = blockPitch<T>(odd.size());
  HostVector<T> memory(73 * pitch);
  memory.fill(0);
  std::vector<T*> stored(70);
  for (std::uint64_t r = 0; r < stored.size(); ++r)
    stored[r] = r % 3 == 0 ? nullptr : memory.data() + r * pitch;
  T* sums[] = {memory.data() + 70 * pitch, memory.data() + 72 * pitch};
  std::vector<T> weights(2 * stored.size());
  std::iota(weights.begin(), weights.end(), T{-60});
  block.compute(SampleChoice(test), {stored, weights, sums});
  for (std::uint64_t c = 0; c < odd.size(); c += c < 4000 ? 97 : 1) {
    T expected[2] = {0, 0};
    for (std::uint64_t r = 0; r < stored.size(); ++r) {
      const T value = numbers[r + (samples - 1 - odd[c])];
      if (stored[r] != nullptr) {
        ASSERT_EQ(stored[r][c], value) << r << ' ' << c;
      }
      for (std::uint64_t f = 0; f < 2; ++f) expected[f] += weights[2 * r + f] * value;
    }
    for (std::uint64_t f = 0; f < 2; ++f) ASSERT_EQ(sums[f][c], expected[f]) << f << ' ' << c;
  }
}

TEST(GivenBlock, GathersStoresAndAddsUp) {
  expectGathered<double>();
  expectGathered<float>();
}

TEST(GivenBlock, DiagonalsAndMatricesOfSubsetsAreTheirSamples) {
  const std::vector<float> numbers = listed();
  const zelmag::KernelMatrix all(
      std::make_shared<zelmag::KernelTable<float>>(
          zelmag::StridedNumbers<float>{numbers.data(), 1, 1}, std::vector<std::uint64_t>{}),
      samples, samples);
  zel::IndexList<> outer(3000);
  for (std::uint64_t k = 0; k < outer.size(); ++k) outer[k] = 3 * k;
  const auto folded = all.subset(outer);
  const std::vector<std::uint64_t> inner{5, 2999, 0};
  KernelBlock<double> block;
  block.assign(SampleChoice(*folded, inner), given);
  HostVector<double> values(4 * blockPitch<double>(3));
  block.computeAll(values.data(), blockPitch<double>(3));
  block.computeDiagonal(values.data() + 3 * blockPitch<double>(3));
  for (std::uint64_t i = 0; i < 3; ++i) {
    for (std::uint64_t j = 0; j < 3; ++j)
      EXPECT_EQ(values[i * blockPitch<double>(3) + j], numbers[3 * (inner[i] + inner[j])]);
    EXPECT_EQ(values[3 * blockPitch<double>(3) + i], numbers[6 * inner[i]]);
  }
}

// Of several threads' failures the first row's is told.
TEST(GivenBlock, TheFirstBadRowIsNamed) {
  std::vector<double> numbers(2 * samples, 1);
  numbers[samples + 25] = HUGE_VAL;  // in rows 26 and up, each in another column
  const zelmag::KernelMatrix all(
      std::make_shared<zelmag::KernelTable<double>>(
          zelmag::StridedNumbers<double>{numbers.data(), 1, 1}, std::vector<std::uint64_t>{}),
      samples, samples);
  KernelBlock<double> block;
  block.assign(SampleChoice(all), given);
  EXPECT_EQ(
      zeltest::failureOf<zel::AppException>([&] { block.compute(SampleChoice(all, 10, 40), {}); }),
      "The kernel values of sample 27 are not finite numbers.");
}

}  // namespace
}  // namespace zelsvm
