#include "zelsvm/options.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <locale>
#include <string>
#include <vector>

#include "shell/command_line.h"
#include "shell/settings.h"

namespace {

using zelsvm_opt::ZelSvmOpt;
using zeltest::changed;
using zeltest::parse;
using zeltest::settings;

TEST(Options, NumbersEndWhereStreamsEndThem) {
  EXPECT_EQ(parse({"zelsvm-train", "-c", " \t12.5abc"}).cost, 12.5);
  EXPECT_EQ(parse({"zelsvm-train", "-c", "1,5"}).cost, 1.0);
  EXPECT_EQ(parse({"zelsvm-train", "-t", "3.9"}).kernelType, 3);
  EXPECT_EQ(parse({"zelsvm-train", "-m", "0x10"}).cacheSize, 0U);
  EXPECT_EQ(parse({"zelsvm-train", "-b", "-1"}).probability, true);
  EXPECT_EQ(parse({"zelsvm-train", "-b", "0.9"}).probability, false);
}

struct CommaNumbers : std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(Options, NumbersDoNotDependOnTheLocale) {
  const std::locale before = std::locale::global({std::locale::classic(), new CommaNumbers});
  const double cost = parse({"zelsvm-train", "-c", "1.5"}).cost;
  std::locale::global(before);
  EXPECT_EQ(cost, 1.5);
}

TEST(Options, LastOfARepeatedOptionWins) {
  const ZelSvmOpt options = parse({"zelsvm-train", "-c", "1", "-x0:1", "-c", "2", "-x", "0:2"});
  EXPECT_EQ(options.cost, 2.0);
  EXPECT_EQ(options.xScale, "0:2");
}

struct NamesCase {
  std::vector<std::string> words;
  std::string input, model, output;
};

TEST(Options, FileNames) {
  const std::vector<NamesCase> cases = {
      {{"zelsvm-train", "a"}, "a", "", ""},
      {{"zelsvm-train", "a", "b", "c", "d"}, "a", "b", "c"},
      {{"zelsvm-scale", "a", "b", "c"}, "a", "", "b"},
      {{"zelsvm-predict", "-q", "a", "b", "c"}, "a", "b", "c"},
      {{"zelsvm-train", "-X", "0", "data"}, "0", "data", ""},
      {{"zelsvm-train", "data", "-c", "10"}, "data", "-c", "10"},
      {{"zelsvm-train", "--", "-c", "10"}, "-c", "10", ""},
      {{"zelsvm-train", "-", "-c", "10"}, "-c", "10", ""},
      {{"zelsvm-train", "/tmp/data", "/q"}, "/tmp/data", "/q", ""},
      {{"zelsvm-train", "/c", "10", "//data"}, "//data", "", ""},
      {{"zelsvm-train", "", "b"}, "", "b", ""},
      {{"other", "-c", "a", "b"}, "a", "b", ""},
  };
  for (const auto& [words, input, model, output] : cases) {
    const ZelSvmOpt options = parse(words);
    const auto shown = testing::PrintToString(words);
    EXPECT_EQ(options.inputFile, input) << shown;
    EXPECT_EQ(options.modelFile, model) << shown;
    EXPECT_EQ(options.outputFile, output) << shown;
  }
  EXPECT_EQ(parse({"zelsvm-train", "data", "-c", "10"}).cost, 1.0);
  EXPECT_EQ(parse({"zelsvm-train", "/c", "10", "data"}).cost, 10.0);
}

TEST(Options, UnknownProgramNamesAreNoTool) {
  EXPECT_EQ(parse({"/usr/bin/zelsvm-train"}).toolName, "zelsvm-train");
  EXPECT_EQ(parse({"Zelsvm-Train"}).toolName, "zelsvm");
  EXPECT_EQ(settings(parse({"other", "-q", "-X", "-c", "10"})),
            changed(zeltest::defaults, "inputFile", "10"));
  const char* const nothing = nullptr;
  EXPECT_EQ(ZelSvmOpt(0, &nothing).toolName, "zelsvm");
}

TEST(Options, ResetOverridesTheTestSize) {
  const ZelSvmOpt options = parse({"zelsvm-test", "-T", "-M", "3", "-N", "4"});
  EXPECT_EQ(options.testFeatures, 5U);
  EXPECT_EQ(options.testSamples, 12U);
}

TEST(OptionsDeathTest, CygwinTerminalIsRefused) {
  ASSERT_EQ(setenv("TERM", "CygWin", 1), 0);
  EXPECT_EXIT(parse({"zelsvm-train"}), testing::ExitedWithCode(1),
              "^Running zelsvm in Cygwin is not supported.\n$");
  ASSERT_EQ(setenv("TERM", "cygwin-xterm", 1), 0);
  EXPECT_EQ(parse({"zelsvm-train"}).toolName, "zelsvm-train");
  ASSERT_EQ(unsetenv("TERM"), 0);
  EXPECT_EQ(parse({"zelsvm-train"}).toolName, "zelsvm-train");
}

}  // namespace
