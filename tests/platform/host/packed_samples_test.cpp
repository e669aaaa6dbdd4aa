// Samples as the host's row products read them: dot products whatever the values and the storage.
#include "platform/host/rows/packed_samples.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "support/matrices.h"

namespace {

constexpr std::uint64_t cols = 21;
constexpr std::uint64_t rows = 37;  // two panels and a part

using zelsvm::PackedSamples;
using Matrix = zeltest::Matrix;
using Draw = std::function<double(std::mt19937&)>;

// Full rows in CSR arrays, but that one column is left out and another stored twice.
struct Samples {
  explicit Samples(const Draw& draw, bool sparse) : table(rows, std::vector<long double>(cols)) {
    std::mt19937 generator(7);
    for (std::uint64_t i = 0; i < rows; ++i) {
      for (std::uint64_t j = 0; j < cols; ++j) add(i, sparse && j == 4 ? 5 : j, draw(generator));
      offsets.push_back(static_cast<int>(values.size()));
    }
    matrix = zelmag::createMatrix<double>(values.data(), columns.data(),
                                          sparse ? offsets.data() : nullptr, cols, rows);
  }

  void add(std::uint64_t i, std::uint64_t j, double value) {
    table[i][j] += value;
    values.push_back(value);
    columns.push_back(static_cast<int>(j));
  }

  std::vector<std::vector<long double>> table;
  std::vector<double> values;
  std::vector<int> columns;
  std::vector<int> offsets{0};
  std::unique_ptr<Matrix> matrix;
};

void expectProducts(const Samples& samples, bool whole) {
  PackedSamples packed;
  packed.assign(*samples.matrix, 0);
  EXPECT_EQ(packed.bytes(), packed.panels() * 16 * cols * (whole ? 4 : 8));
  std::mt19937 generator(9);
  const std::vector<double> row = [&] {
    std::vector<double> values(cols);
    for (double& value : values) value = std::uniform_real_distribution<double>(-1, 1)(generator);
    return values;
  }();
  std::vector<double> factors = row;
  packed.toFactors(factors.data());
  const double* const from[] = {factors.data()};
  std::vector<double> products(packed.panels() * 16);
  double* to[] = {products.data() + 16};
  packed.multiply(1, packed.panels(), from, to, 1);  // what is computed may begin anywhere
  for (std::uint64_t i = 16; i < rows; ++i) {
    long double sum = 0;
    long double magnitude = 0;
    for (std::uint64_t j = 0; j < cols; ++j) {
      sum += row[j] * samples.table[i][j];
      magnitude += std::abs(row[j] * samples.table[i][j]);
    }
    EXPECT_NEAR(products[i], static_cast<double>(sum), static_cast<double>(magnitude * 1e-15L))
        << i;
  }
}

double decimal(std::mt19937& generator, double power) {
  return std::round(std::uniform_real_distribution<double>(-1, 1)(generator) * power) / power;
}

TEST(PackedSamples, FewDecimalsMakeWholeNumbers) {
  const Draw fewDecimals = [](std::mt19937& g) { return decimal(g, 1e6); };
  // As in a file of six significant digits: a few values near 0 have more decimals than the others.
  const Draw someMore = [](std::mt19937& g) {
    return g() % 100 == 0 ? decimal(g, 1e6) * 1e-5 : decimal(g, 1e6);
  };
  const Draw integers = [](std::mt19937& g) { return std::round(decimal(g, 1e6) * 2e8); };
  for (const Draw& draw : {fewDecimals, someMore, integers})
    for (const bool sparse : {false, true}) expectProducts(Samples(draw, sparse), true);
}

TEST(PackedSamples, OtherValuesStayAsTheyAre) {
  const Draw many = [](std::mt19937& g) { return std::uniform_real_distribution<double>()(g); };
  const Draw large = [](std::mt19937& g) { return decimal(g, 1e6) * 1e12; };
  const Draw wide = [](std::mt19937& g) { return decimal(g, 1e6) * (g() % 2 == 0 ? 1 : 1e6); };
  for (const Draw& draw : {many, large, wide})
    for (const bool sparse : {false, true}) expectProducts(Samples(draw, sparse), false);
  // Each fits, but not the sum of the two in one column.
  expectProducts(Samples([](std::mt19937&) { return 2e9; }, true), false);
}

TEST(PackedSamples, WhatIsNoNumberStaysOne) {
  for (const double value : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    PackedSamples packed;
    const Samples samples([=](std::mt19937& g) { return g() % 50 == 0 ? value : 1.0; }, false);
    packed.assign(*samples.matrix, 0);
    EXPECT_EQ(packed.bytes(), packed.panels() * 16 * cols * 8);
  }
}

}  // namespace
