// Trains every formulation with every kernel, sparse and dense, and prints what came of it in full,
// for scripts/compare-reports. With the argument "small" on few samples.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "support/models.h"
#include "support/quiet.h"
#include "support/solved_problem.h"
#include "support/tested_machine.h"

namespace {

using zeltest::Samples;

unsigned long iterationsIn(const std::string& text) {
  return std::strtoul(text.c_str() + text.find(" optimization in ") + 17, nullptr, 10);
}

void report(const char* size, const Samples& samples, const zelsvm::SvmParameters& parameters) {
  zelsvm::SvmContext<double> context(parameters, zelsvm::ParameterChecks::training,
                                     zeltest::testedMachine());
  zeltest::DataSet set(samples, context);
  zelsvm::GenericModel<double> model;
  const zeltest::Training training = zeltest::train(context, set.data(), model);
  std::printf("case %s/%s/%s/%s %.17g %lu\n", context.algorithmName.c_str(),
              context.kernelName.c_str(), context.sparse ? "sparse" : "dense", size,
              training.only().solution.obj, iterationsIn(training.text));
  for (const double value : zeltest::decisionValues(context, model, samples))
    std::printf("%.17g\n", value);
}

void reportAll(bool small) {
  const std::uint64_t rows = small ? 100 : 700;
  for (const int type : zeltest::allTypes)
    for (const int kernel : zeltest::allKernels)
      for (const bool sparse : {true, false})
        report("some", zeltest::samplesFor(type, rows, 20, 1),
               {.svmType = type, .kernelType = kernel, .coef0 = 0.1, .sparse = sparse});
  if (small) return;
  // Enough variables for shrinking, and more rows than the cache holds.
  for (const int type : zeltest::allTypes)
    report("many", zeltest::samplesFor(type, zeltest::isRegression(type) ? 3000 : 6000, 20, 3),
           {.svmType = type, .C = 10, .cacheSize = 20});
}

}  // namespace

int main(int argc, char** argv) {
  const zeltest::Quiet quiet;
  try {
    reportAll(argc > 1 && std::strcmp(argv[1], "small") == 0);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
