#include "tools/platform_estimate.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "tools/tool.h"

namespace zelsvm_main {
namespace {

// Nanoseconds of one thread for a kernel value, and for each stored value of a sample in it: two
// cores with AVX-512 at 50, 100 and 784 features.
constexpr double processorEntry = 0.4;
constexpr double processorValue = 0.023;
// Of a step of the two-variable method on the processor.
constexpr double processorStep = 1000;

// The same of a GPU with a small part of its rate in double precision. On paper: no device has
// confirmed them yet, and scripts/gpu-check prints what one has instead.
constexpr double deviceEntry = 0.1;
constexpr double deviceValue = 0.004;
constexpr double deviceSetStep = 3000;
constexpr double devicePairStep = 25000;
// Seconds until the first launch.
constexpr double deviceStart = 0.6;

// Kernel rows that are made and steps that are taken for each sample of a usual training, and
// samples from which on it goes by working sets.
constexpr double rowsPerSample = 0.5;
constexpr double stepsPerSample = 1.5;
constexpr double leastSetSamples = 1500;

constexpr std::size_t lookBytes = std::size_t{1} << 16;

// What a data file's beginning says about all of it.
struct Look {
  double lines = 0;
  double valuesPerLine = 0;
  double leads = 0;  // different first words
};

std::string beginningOf(const std::string& path) {
  std::string text(lookBytes, '\0');
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                             std::fclose);
  text.resize(file ? std::fread(text.data(), 1, text.size(), file.get()) : 0);
  return text;
}

Look lookInto(const std::string& path) {
  constexpr const char* separators = " \t,;\r";
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
  const std::string text = beginningOf(path);
  const std::size_t end = text.rfind('\n');
  const std::string_view whole(text.data(), end == std::string::npos ? text.size() : end + 1);
  if (whole.empty()) return {};
  const auto count = [](std::string_view in, const char* any) {
    return static_cast<double>(std::count_if(in.begin(), in.end(), [any](char c) {
      return std::string_view(any).find(c) != std::string_view::npos;
    }));
  };
  const double seen = std::max(1.0, count(whole, "\n"));
  const double pairs = count(whole, ":");
  std::set<std::string_view> leads;
  for (std::size_t at = 0; at < whole.size(); at = whole.find('\n', at) + 1) {
    leads.insert(whole.substr(at, whole.find_first_of(" \t,;\r\n", at) - at));
    if (whole.find('\n', at) == std::string_view::npos) break;
  }
  return {.lines = static_cast<double>(status.st_size) / static_cast<double>(whole.size()) * seen,
          .valuesPerLine = (pairs > 0 ? pairs : count(whole, separators)) / seen,
          .leads = static_cast<double>(leads.size())};
}

double nanoseconds(double entry, double value, const PlannedRun& run) {
  return entry + value * run.valuesPerSample;
}

}  // namespace

PlannedRun plannedRun(const zelsvm_opt::ZelSvmOpt& options) {
  PlannedRun run{.asksForDevice = options.gpuDevice != 0};
  const zelsvm_opt::Tool tool = zelsvm_opt::toolNamed(options.toolName);
  if (tool != zelsvm_opt::Tool::train && tool != zelsvm_opt::Tool::predict) return run;
  const Look data = lookInto(options.inputFile);
  run.samples = data.lines;
  run.valuesPerSample = data.valuesPerLine;
  if (tool == zelsvm_opt::Tool::predict) {
    run.vectors = std::max(1.0, lookInto(options.modelFile).lines);
    return run;
  }
  run.repeats = std::max(1.0, static_cast<double>(options.foldCount));
  const bool classifies = options.svmType < 2;
  if (classifies) run.labels = std::max(1.0, data.leads);
  return run;
}

RunSeconds estimatedSeconds(const PlannedRun& run, unsigned threads) {
  const double pairs = run.labels > 2 ? run.labels * (run.labels - 1) / 2 : 1;
  const double samples = run.labels > 2 ? 2 * run.samples / run.labels : run.samples;
  const bool predicts = run.vectors > 0;
  const double entries = predicts ? run.samples * run.vectors
                                  : run.repeats * pairs * rowsPerSample * samples * samples;
  const double steps = predicts ? 0 : run.repeats * pairs * stepsPerSample * samples;
  const double deviceStep = samples < leastSetSamples ? devicePairStep : deviceSetStep;
  return {.processor = 1e-9 * (entries * nanoseconds(processorEntry, processorValue, run) /
                                   std::max(1U, threads) +
                               steps * processorStep),
          .device = deviceStart + 1e-9 * (entries * nanoseconds(deviceEntry, deviceValue, run) +
                                          steps * deviceStep)};
}

}  // namespace zelsvm_main
