// How fast data files are read: megabytes of text per second, over both passes, on one core.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "zeldplus/inc/zelnumbers.h"
#include "zeldplus/zelsvm/data/dense_file_reader.h"
#include "zeldplus/zelsvm/data/sparse_file_reader.h"

namespace {

constexpr int rowCount = 100000;
constexpr int colCount = 100;
constexpr int timedRuns = 7;

double randomValue(std::mt19937_64& random) {
  return std::uniform_real_distribution(-1.0, 1.0)(random);
}

// Rows of all features with six significant digits, as the scale tool writes them. valueSum is the
// sum of what the file says.
std::string makeText(double& valueSum) {
  std::mt19937_64 random(1);
  std::string text;
  char number[zel::numberCapacity];
  for (int row = 0; row < rowCount; ++row) {
    text += row % 2 == 0 ? "1 " : "-1 ";
    for (int col = 1; col <= colCount; ++col) {
      text.append(number, zel::formatInteger(number, col)) += ':';
      const std::string value(number, zel::formatDouble(number, randomValue(random)));
      valueSum += std::strtod(value.c_str(), nullptr);
      (text += value) += ' ';
    }
    text += '\n';
  }
  return text;
}

template <typename Reader>
double readSeconds(const std::string& path, double expectedSum) {
  const auto start = std::chrono::steady_clock::now();
  Reader reader(path, 1);
  reader.read();
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  double sum = 0;
  for (std::uint64_t i = 0; i < reader.values().size(); ++i) sum += reader.values()[i];
  if (reader.rows() != rowCount || sum != expectedSum) {
    std::fprintf(stderr, "the file was read wrong\n");
    std::exit(1);
  }
  return elapsed.count();
}

template <typename Reader>
double medianRate(const std::string& path, double megabytes, double expectedSum) {
  readSeconds<Reader>(path, expectedSum);
  std::vector<double> seconds;
  for (int run = 0; run < timedRuns; ++run)
    seconds.push_back(readSeconds<Reader>(path, expectedSum));
  std::sort(seconds.begin(), seconds.end());
  return megabytes / seconds[timedRuns / 2];
}

}  // namespace

int main() {
  double valueSum = 0;
  const std::string text = makeText(valueSum);
  const std::string path = std::filesystem::temp_directory_path() / "zelsvm_parse_bench.txt";
  zel::CTextFile file(zel::FileMode::write);
  file.open(path);
  file.write(text.data(), text.size());
  file.close();
  const double megabytes = static_cast<double>(text.size()) / 1e6;
  const double sparse = medianRate<zelsvm::SparseFileReader<double>>(path, megabytes, valueSum);
  const double dense = medianRate<zelsvm::DenseFileReader<double>>(path, megabytes, valueSum);
  std::filesystem::remove(path);
  std::printf(
      "{\"bench\": \"parse\", \"megabytes\": %.1f, \"runs\": %d, \"sparse_mb_per_s\": %.0f, "
      "\"dense_mb_per_s\": %.0f}\n",
      megabytes, timedRuns, sparse, dense);
}
