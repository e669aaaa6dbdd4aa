#include "zeldplus/zelsvm/engine/rssolver.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/zelsvm/engine/device_context.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

constexpr std::uint64_t batchLimit = 1000;
// Smaller problems are not worth shrinking.
constexpr std::uint64_t shrinkingThreshold = 4096;
// Iterations between two looks at the clock.
constexpr std::uint64_t reportStride = 64;
constexpr const char* overflowText = "Failed to optimize the svm.";

// Publishes the handle of a texture over the vector, made anew where there is none.
template <typename Texture, typename Vector>
void bindTexture(std::unique_ptr<Texture>& texture, Vector& vector,
                 const cudaTextureObject_t& symbol,
                 const std::source_location& where = std::source_location::current()) {
  if (!texture) texture = std::make_unique<Texture>(vector);
  const cudaTextureObject_t handle = texture->handle();
  zel::zelSafeCall(cudaMemcpyToSymbol(symbol, &handle, sizeof handle), where);
}

}  // namespace

template <typename T>
SmoBaseSolver<T>::SmoBaseSolver(const SvmContext<T>& params, bool nu)
    : params(&params),
      steps(makeSmoSteps<T>(params.kernelType, nu)),
      delta(1),
      deltaHost(1, zel::MemoryKind::pinned) {
  kernel.setForecast(steps.get());
  this->Cp = params.C;
  this->Cn = params.C;
  if (!(this->Cp > 0 && this->Cn > 0))
    throw zel::AppException("Invalid regularization/weight constants.");
}

template <typename T>
void SmoBaseSolver<T>::publishConstants(SvmData<T>& data) const {
  const unsigned long long samples = data.sampleCount();
  const T gamma = params->effectiveGamma(data.matrix().cols());
  const unsigned zero = 0;
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_N, &samples, sizeof samples));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_Cp, &this->Cp, sizeof this->Cp));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_Cn, &this->Cn, sizeof this->Cn));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_gamma, &gamma, sizeof gamma));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_coef0, &params->coef0, sizeof params->coef0));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_degree, &params->degree, sizeof params->degree));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_cnv_sem, &zero, sizeof zero));
  zel::zelSafeCall(cudaMemcpyToSymbol(zelsvm_wss_sem, &zero, sizeof zero));
}

template <typename T>
void SmoBaseSolver<T>::initialize(SvmData<T>& data, const HostVector<T>& hostAlpha,
                                  const HostVector<char2>& hostStatus, const HostVector<T>& p) {
  const std::uint64_t l = hostStatus.size();
  if (l >= noIndex) throw zel::RuntimeException("There are too many variables to optimize.");
  variableCount = static_cast<unsigned>(l);
  initialStatus.resize(l);
  initialStatus.copyFrom(hostStatus, 0, 0, l);
  if (status.resize(l)) statusTexture.reset();
  status.copyFrom(initialStatus, 0, 0, l);
  bindTexture(statusTexture, status, zelsvm_tx_ys);
  allIndices.resize(l);
  for (unsigned k = 0; k < variableCount; ++k) allIndices.set(k, k);
  activeHost.resize(l);
  activeSet.resize(l);

  publishConstants(data);
  if (alpha.resize(l)) alphaTexture.reset();
  alpha.copyFrom(hostAlpha, 0, 0, l);
  bindTexture(alphaTexture, alpha, zelsvm_tx_alpha);
  if (gradient.resize(l)) gradientTexture.reset();
  gradient.copyFrom(p, 0, 0, l);
  bindTexture(gradientTexture, gradient, zelsvm_tx_f);
  kernel.initialize(data.matrix(), params->kernelType, l, params->cacheSize, params->cacheSharers);
  steps->begin({data.sampleCount(), variableCount, this->Cp, this->Cn, gradient.data(),
                alpha.data(), status.data(), activeSet.data(), delta.data(), kernel.diagonal()});
}

template <typename T>
unsigned SmoBaseSolver<T>::resetActiveSet() {
  status.copyFrom(initialStatus, 0, 0, variableCount);
  activeHost.copyFrom(allIndices, 0, 0, variableCount);
  activeSet.copyFrom(allIndices, 0, 0, variableCount);
  steps->activate(variableCount);
  return variableCount;
}

template <typename T>
void SmoBaseSolver<T>::initGradient(SvmData<T>& data) {
  const std::uint64_t samples = data.sampleCount();
  const std::uint64_t step = kernel.slotCount();
  for (std::uint64_t offset = 0; offset < variableCount; offset += samples)
    for (std::uint64_t first = 0; first < samples; first += step)
      addToGradient(offset + first, first, std::min(step, samples - first));
}

template <typename T>
void SmoBaseSolver<T>::addToGradient(std::uint64_t variable, std::uint64_t sample,
                                     std::uint64_t count) {
  const T* const columns = kernel.computeBlock(sample, count);
  steps->addColumns(columns, kernel.pitch(), static_cast<unsigned>(variable),
                    static_cast<unsigned>(count));
  zel::printMessage(".");
}

template <typename T>
void SmoBaseSolver<T>::solve(SmoSolution& result, SvmData<T>& data, HostVector<T>& hostAlpha,
                             HostVector<char2>& hostStatus, const HostVector<T>& p) {
  if (data.sampleCount() == 0) {
    result = SmoSolution{.r = 1};
    return;
  }
  initialize(data, hostAlpha, hostStatus, p);
  Progress progress;
  progress.active = resetActiveSet();
  progress.shrinking = params->shrinking && variableCount > shrinkingThreshold;
  if (!this->gradientReady) initGradient(data);
  StallWatch watch(variableCount, sumOfBounds(hostStatus));
  while (!progress.converged && !progress.stuck) {
    progress.iterations += runBatch(progress, hostStatus);
    watch.see(progress.gap, progress.active == variableCount);
    if (!progress.converged && watch.isDue(progress.iterations))
      progress.stuck = hasStalled(watch, progress.iterations, hostAlpha, p);
    if (zel::isVerbose()) zel::printMessage(".");
    if (!progress.converged && progress.shrinking) shrink(progress, hostStatus);
    if (progress.iterations >= params->maxIterations) break;
  }
  zel::printMessage("\n%s optimization in %lu iterations\n\n\n",
                    progress.converged ? "Finished" : "Failed to reach",
                    progress.iterations & 0xFFFFFFFFu);
  readBack(hostAlpha);
  if (!std::all_of(gradientHost.data(), gradientHost.data() + variableCount,
                   [](T g) { return std::isfinite(g); }))
    throw zel::AppException(overflowText);
  data.releaseDevice();
  releaseTextures();
  collectSolution(result, hostAlpha, hostStatus, p);
}

template <typename T>
std::uint64_t SmoBaseSolver<T>::runBatch(Progress& progress, const HostVector<char2>& hostStatus) {
  const std::uint64_t batch = std::min<std::uint64_t>(variableCount, batchLimit);
  SmoSelection<T> selection;
  SmoSelection<T> second;
  bool restored = false;
  std::uint64_t k = 0;
  while (k < batch && !progress.stuck && !restored) {
    progress.gap = selectWorkingSet(selection, second);
    if (progress.gap <= params->eps && progress.shrinking) {
      zel::printMessage("*");
      progress.active = resetActiveSet();
      progress.gap = selectWorkingSet(selection, second);
      restored = true;
    }
    if (!std::isfinite(progress.gap)) throw zel::AppException(overflowText);
    if (k % reportStride == 0 && zel::wantsProgress())
      report(progress.iterations + k, progress.gap);
    ++k;
    if (progress.gap <= params->eps) {
      progress.converged = true;
      break;
    }
    const SmoPair<T> pair = findDelta(hostStatus, selection, second);
    // A step that changed nothing is followed by the same one, so only such a pair is looked at.
    progress.stuck = pair.i == progress.pair.i && pair.j == progress.pair.j && isEmptyStep();
    progress.pair = pair;
    steps->updateGradient(pair);
  }
  return k;
}

template <typename T>
void SmoBaseSolver<T>::report(std::uint64_t iterations, T gap) {
  gradientHost.resize(variableCount);  // its own contents are read back when they are needed
  gradientHost.copyFrom(alpha, 0, 0, variableCount);
  const T* const multipliers = gradientHost.data();
  const auto positive = std::count_if(multipliers, multipliers + variableCount,
                                      [](T multiplier) { return multiplier > 0; });
  zel::showProgress(
      {iterations, gap, params->eps, kernel.hitRate(), static_cast<std::uint64_t>(positive)});
}

template <typename T>
bool SmoBaseSolver<T>::isEmptyStep() {
  deltaHost.copyFrom(delta, 0, 0, 1);
  const auto [deltaI, deltaJ] = *deltaHost.data();
  return deltaI == 0 && deltaJ == 0;
}

template <typename T>
T SmoBaseSolver<T>::sumOfBounds(const HostVector<char2>& hostStatus) const {
  T sum = 0;
  for (unsigned k = 0; k < variableCount; ++k)
    sum += hostStatus.data()[k].y > 0 ? this->Cp : this->Cn;
  return sum;
}

template <typename T>
bool SmoBaseSolver<T>::hasStalled(StallWatch& watch, std::uint64_t iterations,
                                  HostVector<T>& hostAlpha, const HostVector<T>& p) {
  readBack(hostAlpha);
  T objective = 0;
  T magnitude = 0;
  for (unsigned k = 0; k < variableCount; ++k) {
    const T term = (gradientHost.data()[k] + p.data()[k]) * hostAlpha.data()[k] / 2;
    objective += term;
    magnitude += std::abs(term);
  }
  return watch.hasStalled(iterations, objective, magnitude);
}

template <typename T>
void SmoBaseSolver<T>::readBack(HostVector<T>& hostAlpha) {
  steps->storeGradient();
  gradientHost.resize(variableCount);
  gradientHost.copyFrom(gradient, 0, 0, variableCount);
  hostAlpha.copyFrom(alpha, 0, 0, variableCount);
}

template <typename T>
void SmoBaseSolver<T>::shrink(Progress& progress, HostVector<char2>& hostStatus) {
  if (!progress.unshrunk && progress.gap <= 10 * params->eps) {
    if (zel::isVerbose()) zel::printMessage("*");
    progress.active = resetActiveSet();
    progress.unshrunk = true;
  }
  SmoSelection<T> selection;
  SmoSelection<T> second;
  selectWorkingSet(selection, second);
  reduceWorkingSet(selection, second);
  hostStatus.copyFrom(status, 0, 0, variableCount);
  progress.active = rebuildActiveSet(hostStatus);
  if (progress.active == 0) progress.active = resetActiveSet();
}

template <typename T>
unsigned SmoBaseSolver<T>::rebuildActiveSet(const HostVector<char2>& hostStatus) {
  const char2* const marks = hostStatus.data();
  unsigned* const list = activeHost.data();
  unsigned active = 0;
  for (unsigned k = 0; k < variableCount; ++k)
    if (marks[k].x == 0) list[active++] = k;
  activeSet.copyFrom(activeHost, 0, 0, active);
  steps->activate(active);
  return active;
}

template <typename T>
unsigned SmoBaseSolver<T>::secondIndex(const SmoSelection<T>& selection,
                                       const SmoSelection<T>& second, const T* row, const T* row2) {
  const unsigned j = steps->findDelta(selection, second, row, row2);
  // Numbers that are not comparable leave no candidate.
  if (j == noIndex) throw zel::AppException(overflowText);
  return j;
}

template <typename T>
void SmoBaseSolver<T>::releaseTextures() {
  statusTexture.reset();
  alphaTexture.reset();
  gradientTexture.reset();
  kernel.releaseTexture();
}

template <typename T>
void SmoBaseSolver<T>::collectSolution(SmoSolution& result, const HostVector<T>& hostAlpha,
                                       const HostVector<char2>& hostStatus,
                                       const HostVector<T>& p) const {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  GradientBounds<T> positive{.minLower = infinity, .maxUpper = -infinity};
  GradientBounds<T> negative = positive;
  result = SmoSolution{};
  T objective = 0;
  for (std::uint64_t k = 0; k < variableCount; ++k) {
    const bool isPositive = hostStatus.at(k)->y > 0;
    const T c = isPositive ? this->Cp : this->Cn;
    const T a = hostAlpha.data()[k];
    const T g = gradientHost.data()[k];
    if (std::abs(a) > 0) {
      ++result.nSV;
      result.alphaSum += a;
      if (std::abs(a) >= c) ++result.nBSV;
    }
    GradientBounds<T>& bounds = isPositive ? positive : negative;
    if (a >= c) {
      bounds.maxUpper = std::max(bounds.maxUpper, g);
    } else if (a <= 0) {
      bounds.minLower = std::min(bounds.minLower, g);
    } else {
      ++bounds.count;
      bounds.sum += g;
    }
    objective += (g + p.data()[k]) * a;
  }
  result.obj = objective / 2;
  result.rho = calculateRho(result.r, positive, negative);
}

template <typename T>
T SmoBaseSolver<T>::calculateRho(T& /*r*/, const GradientBounds<T>& positive,
                                 const GradientBounds<T>& negative) const {
  const std::uint64_t count = positive.count + negative.count;
  if (count > 0) return (positive.sum - negative.sum) / static_cast<T>(count);
  const T upper = std::fmin(positive.minLower, -negative.maxUpper);
  const T lower = std::fmax(positive.maxUpper, -negative.minLower);
  return (upper + lower) / 2;
}

template class SmoBaseSolver<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
