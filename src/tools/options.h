// The parsed command line of all tools.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "tools/tool.h"

namespace zelsvm_opt {

// Every setting of a run with its default; nothing changes after construction. The options and the
// tools that know them are in options/option_rows.cpp.
class ZelSvmOpt {
 public:
  // Parses argv. Unknown letters, letters without their argument and surplus file names are
  // ignored; an argument that is not a number counts as 0: warnings say so. Throws AppException for
  // long options that are unknown, incomplete or behind a file name, and where ZELSVM_STRICT is
  // neither 0 nor 1. Ends the process with status 1 under a Cygwin terminal.
  ZelSvmOpt(int argc, const char* const* argv);
  virtual ~ZelSvmOpt() = default;
  ZelSvmOpt(const ZelSvmOpt&) = delete;
  ZelSvmOpt& operator=(const ZelSvmOpt&) = delete;

  // Synthetic data of the test tool, drawn from zel::nextRandom on the first call: testSamples rows
  // of testFeatures values, 0.0 or seldom 1.0. Throws std::bad_alloc.
  double* randomFeatures() const;
  // testSamples labels, -1.0 or seldom +1.0. Throws std::bad_alloc.
  double* randomLabels() const;

  int svmType = 0;  // 0 C-classification, 1 nu-classification, 2 one-class, 3 epsilon regression,
                    // 4 nu-regression
  int kernelType = 2;  // 0 linear, 1 polynomial, 2 radial basis function, 3 sigmoid
  double cost = 1.0;
  double tolerance = 0.001;  // stopping tolerance of the solver
  double epsilon = 0.1;      // of epsilon regression
  double nu = 0.5;
  std::string weights;      // "label1:w1 label2:w2 ..." as typed
  std::string xScale;       // feature bounds "x1:x2"; "-1:1" for the scale tool
  std::string yScale;       // target bounds "y1:y2"
  std::string saveFile;     // scale tool: where the scale parameters go
  std::string restoreFile;  // scale tool: where they come from
  double coef0 = 0.0;
  double degree = 3.0;
  double gamma = 0.0;             // 0: one divided by the number of features
  std::uint64_t cacheSize = 100;  // kernel row cache in MB
  std::uint64_t foldCount = 1;    // below 2: no cross-validation
  bool probability = false;
  bool shrinking = true;
  int gpuDevice = 0;
  std::uint64_t indexBase = 1;  // number of the first feature in data files
  unsigned randomSeed = 0;      // 0: seeded from the clock
  std::string algorithmName = "smo-C-classification";
  std::string kernelName = "radial";
  std::uint64_t testFeatures = 5;   // columns of the synthetic data
  std::uint64_t testSamples = 12;   // rows of the synthetic data
  std::uint64_t maxIterations = 0;  // 0: no limit
  bool denseMatrix = false;         // always true for the test tool
  bool resetTestSize = false;       // testFeatures and testSamples stay at their defaults
  bool verbose = true;              // informational lines are printed
  bool strict = false;              // warnings are errors
  bool help = false;                // all that is asked for is a description of the options
  bool version = false;             // all that is asked for is the version
  std::string toolName;             // one of the four tools, or "zelsvm"
  std::string inputFile;
  std::string modelFile;
  std::string outputFile;
  std::vector<std::string> warnings;  // sentences about the command line

 private:
  void parseArguments(Tool tool, std::span<const char* const> arguments);
  void takeFileNames(Tool tool, std::span<const char* const> names);

  mutable std::unique_ptr<double[]> features;
  mutable std::unique_ptr<double[]> labels;
};

}  // namespace zelsvm_opt
