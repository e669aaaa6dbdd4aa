// The driver of the tools: start-up, what their flows share, and the flows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "base/vectors.h"
#include "data/svm_data.h"
#include "data/svm_scale.h"
#include "files/user_file_reader.h"
#include "model/generic_model.h"
#include "parameters/svm_context.h"
#include "platform/machine.h"
#include "runs/processor.h"
#include "tools/options.h"
#include "tools/platform_choice.h"

namespace zelsvm_main {

// One driver per process, one flow per run. Failures of the parts that it calls leave it unchanged.
template <typename T>
class ZelSvmMain {
 public:
  // The options must outlive the driver.
  ZelSvmMain(const zelsvm_opt::ZelSvmOpt& options, MachineChoice chooseMachine);
  ZelSvmMain(const ZelSvmMain&) = delete;
  ZelSvmMain& operator=(const ZelSvmMain&) = delete;
  virtual ~ZelSvmMain();

  // Prints the banner, selects the machine, seeds the random sequence and runs the tool's flow; any
  // other name ends after that.
  void run();
  // Releases what the last flow made, in the order that its parts depend on each other.
  void reset();

 private:
  void selectMachine();
  void seedRandom() const;
  void createContext();
  // Throws AppException for more folds than a report can sensibly list.
  void requireFoldCount() const;
  // Reads the samples; there are at least minimumCols columns afterwards.
  void loadData(const std::string& path, std::uint64_t minimumCols = 0);
  void loadModel(const std::string& path);
  void train();
  void predict();
  void scale();
  void test();
  // Makes samples and data set from the options' random numbers.
  void createTestData();
  // An empty model whose scale record has the options' ranges and the samples' bounds.
  void createModel();
  // Of data that the model's scale record has scaled. Fills results and correlations; errors are in
  // units of the data file.
  void crossValidate(zelsvm::SimpleData<T>& data);
  void takePredictionMeasures(const zelsvm::GenericProcessor<T>& processor, double varianceFactor);
  void reportCrossValidation() const;
  void reportPrediction() const;

  const zelsvm_opt::ZelSvmOpt* options;
  MachineChoice chooseMachine;
  const zelsvm::Machine* machine = nullptr;
  std::unique_ptr<zelsvm::SvmContext<T>> context;
  std::unique_ptr<zelsvm::GenericModel<T>> model;
  std::unique_ptr<zelmag::AbstractMatrix<T>> samples;
  std::unique_ptr<zelsvm::HostVector<T>> labelStore;  // labels that no reader holds
  std::unique_ptr<zelsvm::UserData<T>> dataSet;
  std::unique_ptr<zelsvm::UserFileReader<T>> reader;
  std::unique_ptr<zelsvm::UserFileReader<T>> modelReader;
  // Entry 0 is the overall measure, the others are those of the folds that hold samples.
  zelsvm::HostVector<T> results;
  zelsvm::HostVector<T> correlations;
};

}  // namespace zelsvm_main
