#include "tools/options.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <locale>
#include <string>
#include <vector>

#include "base/errors.h"
#include "support/temp_file.h"
#include "tools/command_line.h"
#include "tools/settings.h"

namespace {

using zelsvm_opt::ZelSvmOpt;
using zeltest::changed;
using zeltest::parse;
using zeltest::settings;

using Warnings = std::vector<std::string>;

TEST(Options, NumbersEndWhereStreamsEndThem) {
  struct Case {
    std::string letter, text, setting, value, fate;
  };
  const std::string more = "goes on behind its number, which is ignored";
  const std::string none = "is no number and counts as 0";
  const std::string beyond = "is out of range and counts as another number";
  const Case cases[] = {
      {"-c", " \t12.5 ", "cost", "12.5", ""},
      {"-c", "12.5abc", "cost", "12.5", more},
      {"-c", "1,5", "cost", "1", more},
      {"-c", "1 5", "cost", "1", more},
      {"-c", "inf", "cost", "0", none},
      {"-c", "1e", "cost", "0", none},
      {"-c", "1e400", "cost", "1.79769e+308", beyond},
      {"-g", "1e-400", "gamma", "0", beyond},
      {"-g", "0e9", "gamma", "0", ""},
      {"-t", "3.9", "kernelType", "3", more},
      {"-t", "99999999999", "kernelType", "2147483647", beyond},
      {"-m", "0x10", "cacheSize", "0", more},
      {"-m", "-1", "cacheSize", "18446744073709551615", beyond},
      {"-m", "-0", "cacheSize", "0", ""},
      {"-b", "-1", "probability", "1", ""},
      {"-b", "0.9", "probability", "0", more},
  };
  for (const auto& [letter, text, setting, value, fate] : cases) {
    const ZelSvmOpt options = parse({"zelsvm-train", letter, text});
    EXPECT_EQ(settings(options), changed(zeltest::defaults, setting, value)) << letter << text;
    EXPECT_EQ(options.warnings, fate.empty()
                                    ? Warnings{}
                                    : Warnings{"option " + letter + ": \"" + text + "\" " + fate});
  }
}

TEST(Options, StrictnessIsAnOptionAndAVariable) {
  EXPECT_FALSE(parse({"zelsvm-train"}).strict);
  EXPECT_TRUE(parse({"zelsvm-scale", "--strict"}).strict);
  for (const auto& [value, strict] : {std::pair{"1", true}, {"0", false}, {"", false}}) {
    setenv("ZELSVM_STRICT", value, 1);
    EXPECT_EQ(parse({"zelsvm-predict"}).strict, strict) << value;
  }
  setenv("ZELSVM_STRICT", "yes", 1);
  EXPECT_EQ(zeltest::failureOf<zel::AppException>([] { parse({"zelsvm-test"}); }),
            "ZELSVM_STRICT must be 0 or 1, not yes.");
  unsetenv("ZELSVM_STRICT");
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
  Warnings warnings;
};

std::string surplus(const std::string& name, const std::string& count = "") {
  return "\"" + name + "\" is one file too many and is ignored" + count;
}

std::string asFile(const std::string& name) {
  return "\"" + name + "\" stands behind a file name and is taken for one";
}

TEST(Options, FileNames) {
  const std::vector<NamesCase> cases = {
      {{"zelsvm-train", "a"}, "a", "", "", {}},
      {{"zelsvm-train", "a", "b"}, "a", "b", "", {}},
      {{"zelsvm-train", "a", "b", "c", "d"}, "a", "b", "c", {surplus("c", " (the first of 2)")}},
      {{"zelsvm-scale", "a", "b", "c"}, "a", "", "b", {surplus("c")}},
      {{"zelsvm-predict", "-q", "a", "b", "c"}, "a", "b", "c", {}},
      {{"zelsvm-test", "a", "b"}, "a", "b", "", {surplus("b")}},
      {{"zelsvm-train", "-X", "0", "data"}, "0", "data", "", {}},
      {{"zelsvm-train", "data", "-c", "10"}, "data", "-c", "10", {asFile("-c"), surplus("10")}},
      {{"zelsvm-train", "--", "-c", "10"}, "-c", "10", "", {}},
      {{"zelsvm-train", "/tmp/data", "/q"}, "/tmp/data", "/q", "", {}},
      {{"zelsvm-train", "/c", "10", "//data"}, "//data", "", "", {}},
      {{"zelsvm-train", "", "b"}, "", "b", "", {}},
      {{"other", "-c", "a", "b", "-d"}, "a", "b", "-d", {}},
  };
  for (const auto& [words, input, model, output, warnings] : cases) {
    const ZelSvmOpt options = parse(words);
    const auto shown = testing::PrintToString(words);
    EXPECT_EQ(options.inputFile, input) << shown;
    EXPECT_EQ(options.modelFile, model) << shown;
    EXPECT_EQ(options.outputFile, output) << shown;
    EXPECT_EQ(options.warnings, warnings) << shown;
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
