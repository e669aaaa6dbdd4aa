#include "zelsvm/tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

#include "zelsvm/usage.h"

namespace {

using zelsvm_opt::programBaseName;
using zelsvm_opt::Tool;
using zelsvm_opt::usageText;

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

// Guards the long texts against slips: their sizes and the lines with characters that need care.
TEST(Usage, Layout) {
  const auto lines = [](const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
  };
  EXPECT_EQ(lines(usageText(Tool::train)), 36);
  EXPECT_EQ(lines(usageText(Tool::predict)), 7);
  EXPECT_EQ(lines(usageText(Tool::scale)), 9);
  EXPECT_STREQ(usageText(Tool::test), "");
  for (const Tool tool : {Tool::train, Tool::predict, Tool::scale}) {
    const std::string text = usageText(tool);
    EXPECT_TRUE(text.ends_with("-q quiet mode\n"));
    EXPECT_EQ(text.find(" \n"), std::string::npos);
    EXPECT_EQ(text.find('\t'), std::string::npos);
  }
  const std::string train = usageText(Tool::train);
  EXPECT_NE(train.find("\n            \"label1:w1 label2:w2 ...\"\n"), std::string::npos);
  EXPECT_NE(train.find("in the form of \"y1:y2\"\n-p "), std::string::npos);
  EXPECT_NE(std::string(usageText(Tool::scale)).find("\n        (default \"-1:1\")\n"),
            std::string::npos);
}

}  // namespace
