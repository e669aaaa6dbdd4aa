// Writes a dense two-class set of realistic difficulty, the same everywhere: each class is a
// mixture of Gaussian clusters in a few latent dimensions, mapped to the features by a random layer
// of hyperbolic tangents, with noise in every feature and some labels flipped. Features are scaled
// to
// [-1, 1] by the range of the training part.
//   synthetic SAMPLES FEATURES TEST-SAMPLES TRAIN-FILE TEST-FILE
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include "base/files.h"
#include "base/numbers.h"

namespace {

constexpr std::size_t latent = 12;
constexpr std::size_t clusters = 8;
constexpr std::size_t hidden = 64;
constexpr double separation = 1.2;
constexpr double noise = 0.5;
constexpr double flippedShare = 0.04;

using Vector = std::vector<double>;

// The library's generator has prescribed values, its distributions have not.
class Random {
 public:
  double uniform() { return static_cast<double>(bits() >> 11) * 0x1p-53; }
  std::size_t below(std::size_t limit) { return static_cast<std::size_t>(bits() % limit); }
  // Box and Muller, "A Note on the Generation of Random Normal Deviates" (1958).
  double normal() {
    const double radius = std::sqrt(-2 * std::log(1 - uniform()));
    return radius * std::cos(2 * std::numbers::pi * uniform());
  }
  Vector normals(std::size_t count, double scale) {
    Vector values(count);
    for (double& value : values) value = scale * normal();
    return values;
  }

 private:
  std::mt19937_64 bits{1};
};

struct Samples {
  std::size_t features;
  std::vector<bool> positive;
  Vector values;

  Samples(std::size_t count, std::size_t featureCount)
      : features(featureCount), positive(count), values(count * featureCount) {
    Random random;
    const Vector centres = random.normals(2 * clusters * latent, separation);
    const Vector inward = random.normals(latent * hidden, 1 / std::sqrt(latent));
    const Vector offsets = random.normals(hidden, 0.3);
    const Vector outward = random.normals(hidden * features, 1 / std::sqrt(hidden));
    for (std::size_t i = 0; i < count; ++i) {
      const bool cls = random.below(2) == 1;
      const double* const centre =
          centres.data() + (cls * clusters + random.below(clusters)) * latent;
      Vector layer = offsets;
      for (std::size_t q = 0; q < latent; ++q) {
        const double z = centre[q] + random.normal();
        for (std::size_t h = 0; h < hidden; ++h) layer[h] += z * inward[q * hidden + h];
      }
      double* const row = values.data() + i * features;
      for (std::size_t j = 0; j < features; ++j) row[j] = noise * random.normal();
      for (std::size_t h = 0; h < hidden; ++h) {
        const double activation = std::tanh(layer[h]);
        for (std::size_t j = 0; j < features; ++j) row[j] += activation * outward[h * features + j];
      }
      positive[i] = cls != (random.uniform() < flippedShare);
    }
  }

  void scale(std::size_t trainCount) {
    for (std::size_t j = 0; j < features; ++j) {
      double low = values[j];
      double high = values[j];
      for (std::size_t i = 0; i < trainCount; ++i) {
        low = std::min(low, values[i * features + j]);
        high = std::max(high, values[i * features + j]);
      }
      for (std::size_t i = 0; i < positive.size(); ++i) {
        double& value = values[i * features + j];
        value = 2 * (value - low) / (high - low) - 1;
      }
    }
  }

  void write(const std::string& path, std::size_t begin, std::size_t end) const {
    zel::CTextFile file(zel::FileMode::write);
    file.open(path);
    char number[zel::numberCapacity];
    std::string line;
    for (std::size_t i = begin; i < end; ++i) {
      line = positive[i] ? "+1" : "-1";
      for (std::size_t j = 0; j < features; ++j) {
        (line += ' ').append(number, zel::formatUnsigned(number, j + 1)) += ':';
        line.append(number, zel::formatDouble(number, values[i * features + j]));
      }
      line += '\n';
      file.write(line.data(), line.size());
    }
    file.close();
  }
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::fprintf(stderr, "usage: synthetic SAMPLES FEATURES TEST-SAMPLES TRAIN-FILE TEST-FILE\n");
    return EXIT_FAILURE;
  }
  const std::size_t train = std::stoul(argv[1]);
  const std::size_t test = std::stoul(argv[3]);
  Samples samples(train + test, std::stoul(argv[2]));
  samples.scale(train);
  samples.write(argv[4], 0, train);
  samples.write(argv[5], train, train + test);
}
