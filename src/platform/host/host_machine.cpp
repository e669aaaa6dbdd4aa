#include "platform/host/host_machine.h"

#include <sys/utsname.h>

#include "platform/host/host_predictor.h"
#include "platform/host/host_sigmoid_sums.h"
#include "platform/host/pair_schedule.h"
#include "platform/host/sets/host_set_machine.h"
#include "platform/host/solver/host_solver.h"
#include "platform/system/small_file.h"
#include "threads/parallel.h"

namespace zelsvm {
namespace {

constexpr std::size_t longestName = 200;

std::string processorName() {
  const zel::SmallFile processors("/proc/cpuinfo");
  if (auto line = processors.lineAfter("model name"); line && line->find(": ") != std::string::npos)
    return std::string(line->substr(line->find(": ") + 2));
  utsname system{};
  return ::uname(&system) == 0 ? system.machine : "processor";
}

class HostMachine : public Machine {
 public:
  [[nodiscard]] std::string name() const override {
    const int threads = zel::threadCount();
    return processorName().substr(0, longestName) + " with " + std::to_string(threads) +
           (threads == 1 ? " thread" : " threads") + " in place of a";
  }
  [[nodiscard]] std::unique_ptr<SolverMachine> makeSolver(SVM_KERNEL kernel,
                                                          bool twoGroups) const override {
    return makeHostSolver(kernel, twoGroups);
  }
  [[nodiscard]] std::unique_ptr<SetMachine> makeSetMachine() const override {
    return makeHostSetMachine();
  }
  [[nodiscard]] std::unique_ptr<PredictorMachine> makePredictor(
      const DecisionTask& task) const override {
    return makeHostPredictor(task);
  }
  [[nodiscard]] std::unique_ptr<SigmoidSums> makeSigmoidSums() const override {
    return makeHostSigmoidSums();
  }
  [[nodiscard]] unsigned solversAtOnce(const zelmag::AbstractMatrix<double>& samples,
                                       const KernelSettings& kernel, std::uint64_t cacheMegabytes,
                                       const PairLoad& load) const override {
    return pairsAtOnce(samples, kernel, cacheMegabytes, load);
  }
};

}  // namespace

const Machine& hostMachine() {
  static const HostMachine machine;
  return machine;
}

}  // namespace zelsvm
