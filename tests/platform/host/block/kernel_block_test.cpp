// Blocks of kernel values beside a slow computation, and the same bits however they are made.
#include "platform/host/block/kernel_block.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "platform/host/isa.h"
#include "support/matrices.h"
#include "support/thread_limit.h"

namespace {

using zelsvm::HostVector;
using zelsvm::KernelBlock;
using zelsvm::KernelSettings;
using zelsvm::SampleChoice;
using zeltest::Matrix;
using zeltest::Storage;
using zeltest::StoredMatrix;
using Numbers = std::vector<std::uint64_t>;
using Values = std::vector<std::vector<double>>;  // by row

const KernelSettings kernels[] = {{zelsvm::SVM_KERNEL_LINEAR, 1, 0, 0},
                                  {zelsvm::SVM_KERNEL_POLYNOMIAL, 0.25, 0.5, 3},
                                  {zelsvm::SVM_KERNEL_RADIAL, 0.05, 0, 0},
                                  {zelsvm::SVM_KERNEL_SIGMOID, 0.02, -0.1, 0}};

Numbers range(std::uint64_t first, std::uint64_t count) {
  Numbers numbers(count);
  std::iota(numbers.begin(), numbers.end(), first);
  return numbers;
}

// As stored, with all that lies behind them the same as before but for what fills a cache line.
template <typename T>
Values storedValues(KernelBlock<T>& block, const SampleChoice& rows) {
  const std::uint64_t pitch = zelsvm::blockPitch<T>(block.columns()) + 16;
  HostVector<T> memory(rows.count() * pitch);
  memory.fill(7);
  std::vector<T*> stored(rows.count());
  for (std::uint64_t r = 0; r < rows.count(); ++r) stored[r] = memory.at(r * pitch);
  block.compute(rows, {stored, {}, {}});
  Values values;
  for (T* const row : stored) {
    values.emplace_back(row, row + block.columns());
    for (std::uint64_t c = pitch - 16; c < pitch; ++c) EXPECT_EQ(row[c], 7);
  }
  return values;
}

Values blockOf(const SampleChoice& rows, const SampleChoice& columns,
               const KernelSettings& kernel) {
  KernelBlock<double> block;
  block.assign(columns, kernel);
  return storedValues(block, rows);
}

long double dot(const std::vector<double>& a, const std::vector<double>& b) {
  long double sum = 0;
  for (std::size_t k = 0; k < std::min(a.size(), b.size()); ++k)
    sum += static_cast<long double>(a[k]) * b[k];
  return sum;
}

long double slowValue(const KernelSettings& kernel, const std::vector<double>& row,
                      const std::vector<double>& column) {
  const long double product = dot(row, column);
  const long double inner = kernel.gamma * product + kernel.coef0;
  const long double distance = dot(row, row) + dot(column, column) - 2 * product;
  switch (kernel.type) {
    case zelsvm::SVM_KERNEL_POLYNOMIAL:
      return std::pow(inner, static_cast<long double>(kernel.degree));
    case zelsvm::SVM_KERNEL_RADIAL:
      return std::exp(-kernel.gamma * distance);
    case zelsvm::SVM_KERNEL_SIGMOID:
      return std::tanh(inner);
    default:
      return product;
  }
}

template <typename T>
void expectRight(const StoredMatrix& rows, const StoredMatrix& columns,
                 const KernelSettings& kernel, long double precision) {
  KernelBlock<T> block;
  block.assign(SampleChoice(*columns.matrix), kernel);
  const Values values = storedValues(block, SampleChoice(*rows.matrix));
  for (std::uint64_t r = 0; r < values.size(); ++r)
    for (std::uint64_t c = 0; c < block.columns(); ++c) {
      const long double right = slowValue(kernel, rows.table[r], columns.table[c]);
      const long double scale = 10 + std::abs(right);
      ASSERT_LE(std::abs(values[r][c] - right), precision * scale) << r << ", " << c;
    }
}

// Sizes around those of registers, panels and groups; one side may have features of its own.
TEST(KernelBlock, HasTheValuesOfASlowComputation) {
  const std::uint64_t sizes[][4] = {{1, 1, 3, 3},    {9, 23, 7, 7},    {33, 24, 12, 9},
                                    {64, 25, 9, 12}, {15, 97, 31, 31}, {70, 130, 5, 4}};
  for (const KernelSettings& kernel : kernels)
    for (const Storage ofRows : {Storage::dense, Storage::messy})
      for (const Storage ofColumns : {Storage::dense, Storage::messy, Storage::full})
        for (const auto& [rows, columns, rowFeatures, columnFeatures] : sizes) {
          SCOPED_TRACE(zeltest::nameOf(ofRows) + zeltest::nameOf(ofColumns) +
                       std::to_string(kernel.type) + " " + std::to_string(rows));
          const StoredMatrix a(ofRows, rows, rowFeatures, 1);
          const StoredMatrix b(ofColumns, columns, columnFeatures, 2);
          expectRight<double>(a, b, kernel, 1e-13L);
          expectRight<float>(a, b, kernel, 1e-4L);
        }
}

// Few of many features, some samples twice, one empty; the same values dense, sparse, and
// backwards behind others that do not count.
struct SparseData {
  static constexpr std::uint64_t rows = 203;
  static constexpr std::uint64_t cols = 150;

  SparseData() : table(rows * cols, 0.0) {
    std::mt19937 generator(3);
    for (std::uint64_t i = 0; i < rows; ++i) {
      for (std::uint64_t j = 0; j < cols; ++j) {
        double& element = table[i * cols + j];
        if (i % 50 == 49)
          element = table[(i - 7) * cols + j];
        else if (i != 5 && generator() % 12 == 0)
          element = static_cast<double>(generator() % 2000) / 1000 - 0.9995;
        if (element == 0) continue;
        values.push_back(element);
        columns.push_back(static_cast<int>(j));
      }
      offsets.push_back(static_cast<int>(values.size()));
    }
    repeat();
    dense = zelmag::createMatrix<double>(table.data(), nullptr, nullptr, cols, rows);
    sparse =
        zelmag::createMatrix<double>(values.data(), columns.data(), offsets.data(), cols, rows);
  }

  void repeat() {
    for (std::uint64_t i = 0; i < rows; ++i) {
      for (const double added : {1, 0})
        for (int p = offsets[i + 1]; p-- > offsets[i];) {
          repeatedValues.push_back(values[static_cast<std::size_t>(p)] + added);
          repeatedColumns.push_back(columns[static_cast<std::size_t>(p)]);
        }
      repeatedOffsets.push_back(static_cast<int>(repeatedValues.size()));
    }
    repeated = zelmag::createMatrix<double>(repeatedValues.data(), repeatedColumns.data(),
                                            repeatedOffsets.data(), cols, rows);
  }

  std::vector<double> table;
  std::vector<double> values;
  std::vector<double> repeatedValues;
  std::vector<int> columns;
  std::vector<int> repeatedColumns;
  std::vector<int> offsets{0};
  std::vector<int> repeatedOffsets{0};
  std::unique_ptr<Matrix> dense;
  std::unique_ptr<Matrix> sparse;
  std::unique_ptr<Matrix> repeated;
};

// Each way with the same rows and columns.
struct Way {
  std::string name;
  std::function<Values(const KernelSettings&)> values;
};

Values inBatches(const Matrix& matrix, const KernelSettings& kernel, std::uint64_t size) {
  KernelBlock<double> block;
  block.assign(SampleChoice(matrix), kernel);
  Values all;
  for (std::uint64_t first = 0; first < matrix.rows(); first += size) {
    const std::uint64_t count = std::min(size, matrix.rows() - first);
    const Values part = storedValues(block, SampleChoice(matrix, first, count));
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

Values symmetric(const Matrix& matrix, const KernelSettings& kernel) {
  const Numbers numbers = range(0, matrix.rows());
  KernelBlock<double> block;
  block.assign(SampleChoice(matrix, numbers), kernel);
  const std::uint64_t pitch = zelsvm::blockPitch<double>(matrix.rows());
  HostVector<double> values(matrix.rows() * pitch);
  block.computeAll(values.data(), pitch);
  Values all;
  for (std::uint64_t r = 0; r < matrix.rows(); ++r)
    all.emplace_back(values.at(r * pitch), values.at(r * pitch) + matrix.rows());
  return all;
}

void addWays(std::vector<Way>& ways, const std::string& name, const Matrix& matrix,
             const Matrix& other) {
  for (const std::uint64_t size : {1, 2, 8, 31, 203})
    ways.push_back({name + " batches of " + std::to_string(size),
                    [&matrix, size](const auto& k) { return inBatches(matrix, k, size); }});
  ways.push_back({name + " symmetric", [&](const auto& k) { return symmetric(matrix, k); }});
  ways.push_back({name + " columns", [&](const auto& k) {
                    return blockOf(SampleChoice(other), SampleChoice(matrix), k);
                  }});
  ways.push_back({name + " with three threads", [&](const auto& k) {
                    const zeltest::ThreadLimit limit(3);
                    return inBatches(matrix, k, 150);
                  }});
#ifdef __x86_64__
  if (zel::processorIsa() > zel::Isa::avx2)
    ways.push_back({name + " with half the lanes", [&](const auto& k) {
                      const zel::IsaLimit limit(zel::Isa::avx2);
                      return inBatches(matrix, k, 40);
                    }});
#endif
}

TEST(KernelBlock, HasTheSameBitsHoweverItIsMade) {
  const SparseData data;
  std::vector<Way> ways;
  addWays(ways, "dense", *data.dense, *data.sparse);
  addWays(ways, "sparse", *data.sparse, *data.dense);
  ways.push_back({"repeated", [&](const auto& k) {
                    return blockOf(SampleChoice(*data.repeated), SampleChoice(*data.repeated), k);
                  }});
  for (const KernelSettings& kernel : kernels) {
    const zeltest::ThreadLimit limit(1);
    const Values right = blockOf(SampleChoice(*data.dense), SampleChoice(*data.dense), kernel);
    for (const Way& way : ways) EXPECT_EQ(way.values(kernel), right) << way.name << kernel.type;
  }
}

TEST(KernelBlock, PutsEqualSamplesAtDistanceZero) {
  const SparseData data;
  for (const Matrix* const matrix : {data.dense.get(), data.sparse.get()})
    for (const std::uint64_t batch : {1, 203}) {
      const Values values = inBatches(*matrix, kernels[zelsvm::SVM_KERNEL_RADIAL], batch);
      for (std::uint64_t r = 0; r < values.size(); ++r) EXPECT_EQ(values[r][r], 1);
      EXPECT_EQ(values[49][42], 1);
      EXPECT_LT(values[49][43], 1);
    }
}

double fused(double a, double b, double c) {
#ifdef __x86_64__
  if (zel::processorIsa() == zel::Isa::baseline) return a * b + c;
#endif
  return std::fma(a, b, c);
}

// A row alone, which sparse samples may meet feature by feature, and several.
TEST(KernelBlock, HandsColumnsOnOnceTheyAreMade) {
  const SparseData data;
  for (const Matrix* const matrix : {data.dense.get(), data.sparse.get()})
    for (const std::uint64_t rows : {1, 20}) {
      KernelBlock<double> block;
      block.assign(SampleChoice(*matrix), kernels[zelsvm::SVM_KERNEL_RADIAL]);
      const std::uint64_t pitch = zelsvm::blockPitch<double>(block.columns());
      HostVector<double> memory(rows * pitch);
      memory.fill(7);
      std::vector<double*> stored(rows);
      for (std::uint64_t r = 0; r < rows; ++r) stored[r] = memory.at(r * pitch);
      std::vector<double> handed(block.columns(), 0);
      const std::function<void(std::uint64_t, std::uint64_t)> then = [&](std::uint64_t begin,
                                                                         std::uint64_t end) {
        for (std::uint64_t c = begin; c < end; ++c) handed[c] += stored.back()[c];
      };
      block.compute({*matrix, 3, rows}, {.stored = stored, .then = &then});
      EXPECT_EQ(handed, std::vector<double>(stored.back(), stored.back() + block.columns()))
          << matrix->isSparse() << ' ' << rows;
    }
}

// One function, several, and so many that tiles of all heights serve them.
TEST(KernelBlock, AddsRowsToSumsInTheirOrder) {
  const SparseData data;
  std::mt19937 generator(8);
  std::uniform_real_distribution<double> uniform(-1, 1);
  for (const Matrix* const matrix : {data.dense.get(), data.sparse.get()})
    for (const std::uint64_t functions : {1, 3, 15}) {
      const Numbers numbers = range(90, 45);
      const SampleChoice rows(*matrix, numbers);
      KernelBlock<double> block;
      block.assign(SampleChoice(*matrix), kernels[zelsvm::SVM_KERNEL_RADIAL]);
      std::vector<double> weights(numbers.size() * functions);
      for (double& weight : weights) weight = uniform(generator);
      HostVector<double> memory(functions * 512);
      for (std::uint64_t k = 0; k < memory.size(); ++k) memory.set(k, uniform(generator));
      Values right(functions);
      std::vector<double*> sums(functions);
      const Values values = storedValues(block, rows);
      for (std::uint64_t f = 0; f < functions; ++f) {
        sums[f] = memory.at(f * 512);
        right[f].assign(sums[f], sums[f] + block.columns());
        for (std::uint64_t r = 0; r < values.size(); ++r)
          for (std::uint64_t c = 0; c < block.columns(); ++c)
            right[f][c] = fused(weights[r * functions + f], values[r][c], right[f][c]);
      }
      block.compute(rows, {{}, weights, sums});
      for (std::uint64_t f = 0; f < functions; ++f)
        EXPECT_EQ(std::vector<double>(sums[f], sums[f] + block.columns()), right[f]) << f;
    }
}

}  // namespace
