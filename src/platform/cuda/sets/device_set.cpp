#include "platform/cuda/sets/device_set.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/cuda/kernels/set_row_kernels.h"
#include "platform/cuda/runtime/launch.h"

namespace zelsvm {
namespace {

constexpr unsigned sweepBlock = 128;
constexpr std::uint64_t outcomeSize = sizeof(SetOutcome) / sizeof(double);
// More threads wait for each other longer than they save.
constexpr std::uint64_t samplesPerThread = 8;
constexpr std::uint64_t leastThreads = 32;

unsigned threadsFor(std::uint64_t samples) {
  return static_cast<unsigned>(
      std::clamp<std::uint64_t>(std::bit_ceil((samples + samplesPerThread - 1) / samplesPerThread),
                                leastThreads, mostSetThreads));
}

}  // namespace

void DeviceSet::choose(const SetTask& task, DeviceSamples& samples,
                       std::span<const unsigned> chosen) {
  size = chosen.size();
  pitch = zel::roundedCapacity(size);
  matrix.resize(size * pitch);
  std::vector<double> ofChosen;
  for (const unsigned s : chosen) ofChosen.push_back(task.samples->rowNorms().data()[s]);
  norms.assign(ofChosen);
  samples.productsWithin(chosen, matrix.data(), pitch);
  const SetMatrixKernel kernel = setMatrixKernelOf(task.kernel.type);
  const unsigned across = zel::gridSize(zel::gridLimit(kernel, sweepBlock), size, sweepBlock);
  zel::launch(kernel, {dim3{across, static_cast<unsigned>(size)}, sweepBlock}, matrix.data(), pitch,
              norms.data(), static_cast<unsigned>(size));
}

void DeviceSet::addRows(zellas::BlasContext& blas, std::span<const double> weights,
                        std::span<double> sums) {
  packedThere.resize(weights.size() + sums.size());
  packedThere.upload(weights);
  packedThere.upload(sums, weights.size());
  zellas::DenseMatrix<double>(blas, matrix.data(), size, size, pitch)
      .gemv(CUBLAS_OP_T, 1, packedThere.data(), 1, packedThere.data() + weights.size());
  packedThere.download(sums, weights.size());
}

SetSteps DeviceSet::solve(const SetVariables& variables, std::span<double> sums, double tolerance,
                          std::uint64_t mostSteps) {
  const std::uint64_t count = variables.count();
  const unsigned groups = variables.groups();
  packed.assign(outcomeSize, 0);
  packed.insert(packed.end(), sums.begin(), sums.end());
  packed.insert(packed.end(), variables.multipliers.begin(), variables.multipliers.end());
  packed.insert(packed.end(), variables.linearTerm.begin(), variables.linearTerm.end());
  packed.insert(packed.end(), variables.factors.begin(), variables.factors.end());
  packedThere.assign(packed);
  signs.assign(variables.signs);
  offsets.resize((1 + 2 * groups) * size);

  double* const sumsThere = packedThere.data() + outcomeSize;
  double* const multipliers = sumsThere + size;
  const SetArrays arrays{matrix.data(),
                         pitch,
                         sumsThere,
                         offsets.data(),
                         offsets.data() + size,
                         offsets.data() + (1 + groups) * size};
  const DeviceSetVariables there{.samples = size,
                                 .signs = {signs.data(), count},
                                 .linearTerm = {multipliers + count, count},
                                 .multipliers = {multipliers, count},
                                 .Cp = variables.Cp,
                                 .Cn = variables.Cn,
                                 .twoGroups = variables.twoGroups,
                                 .factors = {multipliers + 2 * count, variables.factors.size()}};
  zel::launch(groups == 2 ? solveSetKernel<2> : solveSetKernel<1>, {1U, threadsFor(size)}, arrays,
              there, tolerance, mostSteps, reinterpret_cast<SetOutcome*>(packedThere.data()));

  packed.resize(outcomeSize + size + count);
  packedThere.download(packed);
  std::copy_n(&packed[outcomeSize], size, sums.begin());
  std::copy_n(&packed[outcomeSize + size], count, variables.multipliers.begin());
  SetOutcome outcome;
  std::memcpy(&outcome, packed.data(), sizeof outcome);
  return {outcome.steps, outcome.isDone != 0};
}

}  // namespace zelsvm
