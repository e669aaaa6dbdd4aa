// Where the machine is chosen by what a run would take.
#include "tools/platform_estimate.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/temp_file.h"
#include "tools/command_line.h"
#include "tools/platform_choice.h"

namespace {

using zelsvm_main::judgeDevice;
using zelsvm_main::PlannedRun;

PlannedRun planFor(const std::vector<std::string>& words) {
  return zelsvm_main::plannedRun(zeltest::parse(words));
}

TEST(PlatformEstimate, ReadsTheSizeOfARunFromTheBeginningsOfItsFiles) {
  std::string dense;
  std::string sparse;
  std::string model;
  for (int line = 0; line < 20'000; ++line) {
    dense += std::to_string(line % 3) + ",1.25,-3,0.5,17\n";
    sparse += std::string(line % 2 == 0 ? "-1" : "+1") + " 3:1 17:0.25\n";
    if (line < 100) model += "0.5 3:1 17:0.25\n";
  }
  const zeltest::TempFile denseFile(dense);
  const zeltest::TempFile sparseFile(sparse);
  const zeltest::TempFile modelFile(model);

  const PlannedRun training = planFor({"zelsvm-train", "-v", "5", denseFile.path()});
  EXPECT_NEAR(training.samples, 20'000, 200);
  EXPECT_NEAR(training.valuesPerSample, 4, 0.01);
  EXPECT_EQ(training.labels, 3);
  EXPECT_EQ(training.repeats, 5);
  EXPECT_EQ(training.vectors, 0);
  EXPECT_FALSE(training.asksForDevice);
  EXPECT_EQ(planFor({"zelsvm-train", "-s", "3", denseFile.path()}).labels, 1);
  EXPECT_TRUE(planFor({"zelsvm-train", "-G", "1", denseFile.path()}).asksForDevice);

  const PlannedRun prediction =
      planFor({"zelsvm-predict", sparseFile.path(), modelFile.path(), "out"});
  EXPECT_NEAR(prediction.samples, 20'000, 200);
  EXPECT_NEAR(prediction.valuesPerSample, 2, 0.01);
  EXPECT_EQ(prediction.vectors, 100);

  for (const std::string& path : {std::string("/nowhere"), std::string("/dev/zero")})
    EXPECT_EQ(planFor({"zelsvm-train", path}).samples, 0);
  EXPECT_EQ(planFor({"zelsvm-scale", denseFile.path(), "out"}).samples, 0);
}

TEST(PlatformEstimate, TakesTheDeviceForLargeRunsOnly) {
  const auto takes = [](const PlannedRun& run, unsigned threads = 2) {
    return judgeDevice(run, threads).isTaken;
  };
  EXPECT_FALSE(takes({}));
  EXPECT_TRUE(takes({.asksForDevice = true}));
  EXPECT_FALSE(takes({.samples = 5'000, .valuesPerSample = 100, .labels = 2}));
  EXPECT_TRUE(takes({.samples = 200'000, .valuesPerSample = 100, .labels = 2}));
  EXPECT_FALSE(takes({.samples = 200'000, .valuesPerSample = 100, .labels = 2}, 64));
  // Small pairs wait for the device more than they compute.
  EXPECT_FALSE(takes({.samples = 15'000, .valuesPerSample = 16, .labels = 26}));
  EXPECT_TRUE(takes({.samples = 100'000, .valuesPerSample = 500, .vectors = 50'000}));
  EXPECT_FALSE(takes({.samples = 1'000, .valuesPerSample = 500, .vectors = 1'000}));
}

}  // namespace
