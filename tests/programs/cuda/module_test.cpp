// The tools with the CUDA engine's module at hand, where no device is to be seen.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "support/programs/tool_runs.h"
#include "text_match.h"

namespace {

namespace fs = std::filesystem;
using zeltest::ToolResult;
using zeltest::Workspace;

zeltest::RunSettings on(const std::string& platform) {
  return {.environment = {{"ZELSVM_PLATFORM", platform}, {"CUDA_VISIBLE_DEVICES", ""}}};
}

void expectRuntimeError(const ToolResult& result) {
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, "");
  EXPECT_TRUE(zeltest::matches(result.out,
                               "zelsvm-train [0-9.]+\n\nplatform/cuda/[a-z_/]+\\([0-9]+\\): "
                               "zelSafeCall: CUDA runtime error - [^\n]+\\.\n\n"))
      << result.out;
}

TEST(CudaModule, ExportsItsEntryAlone) {
  const ToolResult result = Workspace().run(ZEL_NM, {"-D", "-P", "--defined-only", ZEL_MODULE});
  ASSERT_EQ(result.status, 0) << testing::PrintToString(result);
  EXPECT_TRUE(zeltest::matches(result.out, "zelsvmMachines T [^\n]*\n")) << result.out;
}

TEST(CudaModule, HostTrainsTheSameBesideIt) {
  const Workspace workspace;
  const auto train = [&](const std::string& platform) {
    zeltest::succeed(workspace, {"zelsvm-train", zeltest::cancerFile(), "model"}, on(platform));
    return workspace.read("model");
  };
  EXPECT_EQ(train(""), train("host"));
}

TEST(CudaModule, WantedWithoutADeviceIsTheRuntimesError) {
  expectRuntimeError(Workspace().run("zelsvm-train", {"-q", "data"}, on("cuda")));
}

TEST(CudaModule, IsFoundWhereItIsInstalled) {
  const Workspace workspace;
  const auto run = [&] { return workspace.run("./bin/zelsvm-train", {"-q", "data"}, on("cuda")); };
  fs::create_directories(workspace.folder() / "bin");
  fs::create_directories(workspace.folder() / "lib/zelsvm");
  workspace.copyProgram("bin/zelsvm-train");
  EXPECT_EQ(run().out, "The CUDA engine is not part of this installation.\n");
  workspace.write("lib/zelsvm/libzelsvm-cuda.so", "no module");
  const std::string text = run().out;
  EXPECT_TRUE(zeltest::matches(text, "The CUDA engine cannot be loaded: [^\n]+\\.\n")) << text;
  fs::remove(workspace.folder() / "lib/zelsvm/libzelsvm-cuda.so");
  fs::create_symlink(ZEL_MODULE, workspace.folder() / "lib/zelsvm/libzelsvm-cuda.so");
  expectRuntimeError(run());
}

}  // namespace
