// Learns from random points which part of the plane lies inside a circle, and says how sure it is.
#include <zelsvm/zelsvm.h>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <exception>
#include <random>
#include <string_view>
#include <vector>

namespace {

std::atomic<bool> interrupted = false;

}  // namespace

int main() try {
  std::signal(SIGINT, [](int) { interrupted = true; });
  std::mt19937 generator(1);
  const auto coordinate = [&] { return static_cast<double>(generator() % 2001) / 1000 - 1; };
  std::vector<double> points;  // x and y of one point after the other
  std::vector<double> sides;
  std::vector<double> weights;
  for (int i = 0; i < 400; ++i) {
    const double x = coordinate();
    const double y = coordinate();
    points.insert(points.end(), {x, y});
    sides.push_back(x * x + y * y < 0.5 ? 1 : -1);
    weights.push_back(x > 0 ? 1 : 0.5);  // as if half as many had been seen on the left
  }
  const auto samples = zelsvm::Samples::dense(points, 2);  // looks at the points, copies nothing
  const zelsvm::Parameters parameters{.cost = 10, .probability = true, .randomSeed = 1};

  const auto validation = zelsvm::crossValidate(samples, sides, parameters, 5, weights);
  std::printf("cross-validation: %.0f %% right\n", validation.overall.accuracy);

  // What zelsvm-train would print goes where the program wants it, and Ctrl-C ends the training.
  const zelsvm::Sink log{
      .message = [](std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); },
      .threads = 2,
      .cancelled = &interrupted};
  const auto trained = zelsvm::train(samples, sides, parameters, weights, log);
  trained.save("ring.model");
  for (const zelsvm::Solve& solve : trained.solves())
    if (!solve.converged) std::fprintf(stderr, "stopped at a gap of %g\n", solve.gap);

  // As bytes a model keeps every digit; the text file keeps six of each number.
  const auto model = zelsvm::Model::fromBytes(trained.toBytes());
  const std::vector<double> places{0, 0, 0.6, 0, 0.9, 0};
  const auto found = model.predict(zelsvm::Samples::dense(places, 2), true);
  for (std::size_t i = 0; i < found.values.size(); ++i)
    std::printf("(%g, %g): %s, probability %.2f\n", places[2 * i], places[2 * i + 1],
                found.values[i] > 0 ? "inside" : "outside", found.probabilities[2 * i + 1]);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
