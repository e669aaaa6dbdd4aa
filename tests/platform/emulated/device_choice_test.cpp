// Which devices the machine takes, and how much of them.
#include <gtest/gtest.h>

#include <string>

#include "base/errors.h"
#include "platform/cuda/machine/cuda_machine.h"
#include "platform/device/solver_walk.h"
#include "platform/emulated/runtime/device_setup.h"
#include "support/temp_file.h"

namespace {

using zel::DeviceSetup;
using zelsvm::CudaMachine;
using zeltest::SolverWalk;

using Devices = std::vector<zel::DeviceTraits>;

constexpr std::uint64_t megabyte = std::uint64_t{1} << 20;
constexpr int radial = zelsvm::SVM_KERNEL_RADIAL;

TEST(DeviceChoice, CountsDevicesThatThereIsCodeFor) {
  EXPECT_EQ(zelsvm::usableDeviceCount(), 1);
  const DeviceSetup setup(
      Devices{{.major = 7, .minor = 4}, {.major = 7, .minor = 5}, {.major = 12}});
  EXPECT_EQ(zelsvm::usableDeviceCount(), 2);
  const std::string text =
      "The Emulated GPU has compute capability 7.4, and the CUDA engine needs 7.5 or more.";
  EXPECT_EQ(zelsvm::deviceRefusal(0), text);
  EXPECT_EQ(zelsvm::deviceRefusal(1), "");
  EXPECT_EQ(zelsvm::deviceRefusal(3), "") << "opening it says why";
  EXPECT_EQ(zeltest::failureOf<zel::AppException>([] { CudaMachine(0); }), text);
  EXPECT_NE(
      zeltest::failureOf<zel::RuntimeException>([] { CudaMachine(3); }).find("invalid device"),
      std::string::npos);
  SolverWalk(CudaMachine(2), {.samples = 40, .kernel = radial}, 1).run(2);
}

TEST(DeviceChoice, NoDeviceIsNoFailureUntilOneIsOpened) {
  const DeviceSetup setup(Devices{});
  EXPECT_EQ(zelsvm::usableDeviceCount(), 0);
  EXPECT_THROW(CudaMachine(0), zel::RuntimeException);
}

TEST(DeviceChoice, RefusesADeviceThatHasNoRoomForAKernel) {
  const CudaMachine machine(0);
  const DeviceSetup setup(Devices{{.residentBlocks = 0}});
  EXPECT_THROW(machine.makeSolver(zelsvm::SVM_KERNEL_RADIAL, false), zel::RuntimeException);
  EXPECT_THROW(machine.makeSigmoidSums(), zel::RuntimeException);
}

// More blocks than the last one has threads to fold their results with.
TEST(DeviceChoice, UsesALargeDevice) {
  const DeviceSetup setup(Devices{{.residentBlocks = 20}});
  const CudaMachine machine(0);
  for (const bool twoGroups : {false, true})
    SolverWalk(machine, {.samples = 1100, .kernel = radial, .twoGroups = twoGroups}, 2).run(2);
  SolverWalk(machine, {.samples = 1100, .kernel = 0, .fractions = false, .fromZero = true}, 3)
      .expectFirstOfTies();
}

// Half of the free memory is no small number because its low 32 bits are.
TEST(DeviceMemory, RowsFillTheCacheOfALargeDevice) {
  const DeviceSetup setup(Devices{{.memoryBytes = (8192 + 20) * megabyte}});
  const CudaMachine machine(0);
  const zeltest::ReferenceSolver reference({.samples = 100, .kernel = radial}, 2);
  const auto solver = machine.makeSolver(zelsvm::SVM_KERNEL_RADIAL, false);
  auto task = reference.task();
  task.cacheMegabytes = 5000;
  solver->begin(task, [] {});
  zelsvm::SmoSelection<double> selection{};
  solver->select(selection, selection);
  for (int round = 0; round < 2; ++round)
    for (selection.index = 0; selection.index < 100; ++selection.index)
      solver->movePair(selection, selection);
  EXPECT_GE(solver->cacheHitRate(), 0.5);
}

// Sparse rows are laid out some at a time: 60 of them at once would take 60 MB.
TEST(DeviceMemory, AStartGradientTakesABoundedPartOfIt) {
  const DeviceSetup setup(Devices{{.memoryBytes = 25 * megabyte}});
  const CudaMachine machine(0);
  zeltest::Rows rows(60, std::vector<double>(131'072));
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i][1000 * i] = rows[i][7] = 0.5;
  const zeltest::SampleMatrix matrix(rows, true);
  const std::vector<signed char> signs(60, 1);
  const std::vector<double> start(60, 0.5);
  const std::vector<double> zeros(60, 0.0);
  const auto solver = machine.makeSolver(zelsvm::SVM_KERNEL_LINEAR, false);
  solver->begin({.samples = &matrix.get(),
                 .kernel = {zelsvm::SVM_KERNEL_LINEAR, 1, 0, 1},
                 .signs = signs,
                 .start = start,
                 .linearTerm = zeros,
                 .Cp = 1,
                 .Cn = 1,
                 .cacheMegabytes = 1},
                [] {});
  std::vector<double> gradient(60);
  solver->read({}, gradient);
  for (const double value : gradient) EXPECT_EQ(value, 0.5 * (60 * 0.25 + 0.25));
}

}  // namespace
