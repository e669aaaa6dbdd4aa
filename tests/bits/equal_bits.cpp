// Prints a checksum of the exact bits of each run's results, for scripts/check-bits.
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "base/output/console.h"
#include "base/random.h"
#include "bits/runs.h"
#include "platform/host/host_machine.h"
#include "platform/host/isa.h"
#include "runs/processor.h"
#include "support/thread_limit.h"

namespace {

using Values = zelsvm::HostVector<double>;

// What the solvers say is no part of the report.
struct Silence : zel::MessageSink {
  Silence() : MessageSink(false) {}
  void write(std::string_view /*text*/) override {}
};

// Each step can be undone: one word that differs always shows.
class Checksum {
 public:
  void add(std::uint64_t word) { state = std::rotl((state ^ word) * 0x9e3779b97f4a7c15, 29); }
  void add(double value) { add(std::bit_cast<std::uint64_t>(value)); }
  void add(const Values& values) {
    add(values.size());
    for (std::uint64_t i = 0; i < values.size(); ++i) add(values[i]);
  }
  void print(const std::string& name) const {
    std::printf("%s %016llx\n", name.c_str(), static_cast<unsigned long long>(state));
  }

 private:
  std::uint64_t state = 1;
};

void printModel(const std::string& name, const zelsvm::GenericModel<double>& model) {
  Checksum sum;
  sum.add(model.rho());
  sum.add(model.coefficients());
  sum.add(model.sigma);
  for (const auto& [pair, sigmoid] : model.sigmoids) {
    sum.add(sigmoid.A);
    sum.add(sigmoid.B);
  }
  sum.print(name + " model");
}

void printCrossValidation(const zeltest::BitRun& run, const zelsvm::SvmContext<double>& context) {
  zeltest::DataSet set(run.samples, context);
  zelsvm::GenericProcessor<double> processor(context);
  Values predictions(run.samples.rows());
  processor.crossTrain(predictions, set.data(), run.folds, run.probability);
  Checksum sum;
  sum.add(predictions);
  sum.print(run.name + " predictions");
}

void printTraining(const zeltest::BitRun& run, const zelsvm::SvmContext<double>& context) {
  zeltest::DataSet set(run.samples, context);
  zelsvm::GenericProcessor<double> processor(context);
  zelsvm::GenericModel<double> model;
  processor.train(model, set.data(), run.probability);
  printModel(run.name, model);

  zeltest::DataSet test(run.test, context);
  zelsvm::DecisionRecord<double> record;
  processor.addHandler(record);
  Values output(run.test.rows());
  const bool labelled = context.problemKind == zelsvm::ProblemKind::classification;
  Values probabilities(run.probability && labelled ? output.size() * model.labels().size() : 0);
  processor.predict(output, probabilities, model, test.data(), run.probability);
  Checksum sum;
  sum.add(record.values);
  sum.add(probabilities);
  sum.print(run.name + " predictions");
}

struct InstructionSet {
  std::string_view name;
  zel::Isa isa;
};

// Those with fused multiply-add: without it results are rounded otherwise.
constexpr InstructionSet sets[] = {
#ifdef __FP_FAST_FMA
    {"baseline", zel::Isa::baseline},
#else
    {"avx2", zel::Isa::avx2},
    {"avx512", zel::Isa::avx512},
#endif
};

int printSets() {
  for (const InstructionSet& set : sets)
    std::printf("%.*s %s\n", static_cast<int>(set.name.size()), set.name.data(),
                set.isa <= zel::processorIsa() ? "here" : "missing");
  return 0;
}

struct Setting {
  int threads;
  unsigned cacheMegabytes;
  bool sparse;
};

void printRuns(std::vector<zeltest::BitRun> runs, const Setting& setting) {
  const zeltest::ThreadLimit limit(setting.threads);
  for (zeltest::BitRun& run : runs) {
    run.parameters.cacheSize = setting.cacheMegabytes;
    run.parameters.sparse = setting.sparse;
    const zelsvm::SvmContext<double> context(run.parameters, zelsvm::ParameterChecks::training,
                                             zelsvm::hostMachine());
    zel::seedRandom(1);
    run.folds > 0 ? printCrossValidation(run, context) : printTraining(run, context);
  }
}

int printWith(std::string_view name, const Setting& setting, bool all) {
  for (const InstructionSet& set : sets) {
    if (set.name != name || set.isa > zel::processorIsa()) continue;
    const zel::IsaLimit limit(set.isa);
    printRuns(zeltest::shortRuns(), setting);
    if (all) printRuns(zeltest::longRuns(), setting);
    return 0;
  }
  std::fprintf(stderr, "no such instruction set here: %s\n", std::string(name).c_str());
  return 2;
}

}  // namespace

// Without arguments: the instruction sets, each "here" or "missing". Else: one of them, threads,
// megabytes of cache, "sparse" or "dense", and "all" or "short" runs.
int main(int argc, char** argv) {
  Silence silence;
  const zel::SinkScope scope(silence);
  try {
    if (argc != 6) return printSets();
    const Setting setting{std::atoi(argv[2]), static_cast<unsigned>(std::atoi(argv[3])),
                          std::string_view(argv[4]) == "sparse"};
    return printWith(argv[1], setting, std::string_view(argv[5]) == "all");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
