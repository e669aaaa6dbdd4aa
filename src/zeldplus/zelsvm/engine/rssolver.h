// Sequential minimal optimisation of min ½ α'Qα + p'α subject to y'α = const, 0 <= α_k <= C_k, with
// Q_kj = y_k y_j K(x_k, x_j). Platt, "Fast Training of Support Vector Machines using Sequential
// Minimal Optimization" (1998), with second-order working sets (Fan, Chen and Lin, JMLR 6, 2005)
// and the gradient of all variables kept up to date, so that shrinking never reconstructs it.
#pragma once

#include <cstdint>
#include <memory>

#include "zeldplus/inc/zeltexture_v2.h"
#include "zeldplus/inc/zelvectors.h"
#include "zeldplus/zelsvm/data/svm_data.h"
#include "zeldplus/zelsvm/engine/rskernel.h"
#include "zeldplus/zelsvm/engine/smo_records.h"
#include "zeldplus/zelsvm/engine/smo_steps.h"
#include "zeldplus/zelsvm/engine/stall_watch.h"
#include "zeldplus/zelsvm/engine/svm_context.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
class AbstractSvmSolver {
 public:
  virtual ~AbstractSvmSolver() = default;

  // Minimises from the feasible start alpha, which receives the solution. status holds a shrink
  // mark (0) and a label sign per variable; p is the linear term. There are as many variables as
  // samples, or twice as many. Throws AppException when no step can be found, RuntimeException for
  // device failures.
  virtual void solve(SmoSolution& result, SvmData<T>& data, HostVector<T>& alpha,
                     HostVector<char2>& status, const HostVector<T>& p) = 0;

  // Upper bounds of variables with positive sign, and of the others.
  T Cp = 1;
  T Cn = 1;
  // Says that alpha starts at 0, so that p already is the gradient.
  bool gradientReady = false;
};

// Gradient entries of one sign class by where the multipliers lie.
template <typename T>
struct GradientBounds {
  T minLower;  // minimum over those at 0
  T maxUpper;  // maximum over those at their bound
  T sum = 0;   // over the free ones
  std::uint64_t count = 0;
};

// What the core and the nu solver share: set-up, loop, gradient, shrinking and the result.
template <typename T>
class SmoBaseSolver : public AbstractSvmSolver<T> {
 public:
  // nu: the two label signs are searched separately. Throws AppException unless C > 0.
  SmoBaseSolver(const SvmContext<T>& params, bool nu);

  void solve(SmoSolution& result, SvmData<T>& data, HostVector<T>& alpha, HostVector<char2>& status,
             const HostVector<T>& p) override;

 protected:
  virtual void initialize(SvmData<T>& data, const HostVector<T>& alpha,
                          const HostVector<char2>& status, const HostVector<T>& p);
  // Fills the selections (core: two copies of one; nu: positive and negative class) from the active
  // set and returns the largest violation.
  virtual T selectWorkingSet(SmoSelection<T>& selection, SmoSelection<T>& second) = 0;
  // Chooses the pair, moves its multipliers on the device and leaves the step in delta.
  virtual SmoPair<T> findDelta(const HostVector<char2>& status, const SmoSelection<T>& selection,
                               const SmoSelection<T>& second) = 0;
  // Marks variables to shrink.
  virtual void reduceWorkingSet(const SmoSelection<T>& selection, const SmoSelection<T>& second) {
    steps->reduce(selection, second);
  }
  virtual T calculateRho(T& r, const GradientBounds<T>& positive,
                         const GradientBounds<T>& negative) const;

  // The steps' second index; throws AppException when there is none.
  unsigned secondIndex(const SmoSelection<T>& selection, const SmoSelection<T>& second,
                       const T* row, const T* row2);

  const SvmContext<T>* params;
  std::unique_ptr<SmoSteps<T>> steps;
  SmoKernel<T> kernel;
  zel::DeviceVector<T> alpha;
  zel::DeviceVector<char2> status;
  zel::DeviceVector<unsigned> activeSet;
  zel::DeviceVector<SmoDelta<T>> delta;

 private:
  // Where a solve stands between its batches of iterations.
  struct Progress {
    std::uint64_t iterations = 0;
    unsigned active = 0;
    T gap = 0;
    SmoPair<T> pair{noIndex, noIndex, nullptr, nullptr};  // of the last step
    bool converged = false;
    bool stuck = false;  // further steps change or gain nothing
    bool unshrunk = false;
    bool shrinking = false;
  };

  void publishConstants(SvmData<T>& data) const;
  void initGradient(SvmData<T>& data);
  void addToGradient(std::uint64_t variable, std::uint64_t sample, std::uint64_t count);
  unsigned resetActiveSet();
  unsigned rebuildActiveSet(const HostVector<char2>& hostStatus);
  std::uint64_t runBatch(Progress& progress, const HostVector<char2>& hostStatus);
  void shrink(Progress& progress, HostVector<char2>& hostStatus);
  void report(std::uint64_t iterations, T gap);
  [[nodiscard]] bool isEmptyStep();
  [[nodiscard]] T sumOfBounds(const HostVector<char2>& hostStatus) const;
  [[nodiscard]] bool hasStalled(StallWatch& watch, std::uint64_t iterations,
                                HostVector<T>& hostAlpha, const HostVector<T>& p);
  void readBack(HostVector<T>& hostAlpha);
  void releaseTextures();
  void collectSolution(SmoSolution& result, const HostVector<T>& hostAlpha,
                       const HostVector<char2>& hostStatus, const HostVector<T>& p) const;

  unsigned variableCount = 0;
  zel::DeviceVector<T> gradient;
  std::unique_ptr<zel::LinearTexture<T>> alphaTexture;
  std::unique_ptr<zel::LinearTexture<T>> gradientTexture;
  std::unique_ptr<zel::LinearTexture<char2>> statusTexture;
  HostVector<char2> initialStatus;
  HostVector<unsigned> allIndices;
  HostVector<unsigned> activeHost;
  HostVector<T> gradientHost;
  HostVector<SmoDelta<T>> deltaHost;
};

}  // namespace zelsvm::inline ZEL_PLATFORM
