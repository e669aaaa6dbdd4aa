#include "tools/tool.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using zelsvm_opt::programBaseName;
using zelsvm_opt::Tool;

TEST(Tool, BaseNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"zelsvm-train", "zelsvm-train"},
      {"C:\\tools\\zelsvm-train.EXE", "zelsvm-train"},
      {"zelsvm-train.exe.bak", "zelsvm-train.exe.bak"},
      {"zelsvm-train.exe.exe", "zelsvm-train.exe"},
      {"zelsvm-train.ex", "zelsvm-train.ex"},
      {"/usr/bin/zelsvm-scale", "zelsvm-scale"},
      {"/usr\\bin/x\\zelsvm-scale", "zelsvm-scale"},
      {"./zelsvm-test.Exe", "zelsvm-test"},
      {"dir.exe/zelsvm-test", "zelsvm-test"},
      {".exe", ""},
      {"dir/", ""},
      {"", ""},
  };
  for (const auto& [program, expected] : cases) EXPECT_EQ(programBaseName(program), expected);
}

TEST(Tool, ExactNamesOnly) {
  EXPECT_EQ(zelsvm_opt::toolNamed("zelsvm-train"), Tool::train);
  EXPECT_EQ(zelsvm_opt::toolNamed("zelsvm-predict"), Tool::predict);
  EXPECT_EQ(zelsvm_opt::toolNamed("zelsvm-scale"), Tool::scale);
  EXPECT_EQ(zelsvm_opt::toolNamed("zelsvm-test"), Tool::test);
  for (const char* const name : {"", "zelsvm", "ZELSVM-TRAIN", "zelsvm-train ", "zelsvm-trai"})
    EXPECT_EQ(zelsvm_opt::toolNamed(name), Tool::none) << name;
}

}  // namespace
