#include "zelsvm/options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <sstream>

#include "shell/command_line.h"
#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zelrandom.h"

namespace {

using zelsvm_opt::ZelSvmOpt;
using zeltest::parse;

// Every setting as text, so that any two can be compared and shown.
std::string settings(const ZelSvmOpt& o) {
  std::string text;
  const auto add = [&text](const char* name, const auto& value) {
    std::ostringstream stream;
    stream << name << '=' << value << '\n';
    text += stream.str();
  };
  add("svmType", o.svmType), add("kernelType", o.kernelType), add("cost", o.cost);
  add("tolerance", o.tolerance), add("epsilon", o.epsilon), add("nu", o.nu);
  add("weights", o.weights), add("xScale", o.xScale), add("yScale", o.yScale);
  add("saveFile", o.saveFile), add("restoreFile", o.restoreFile), add("coef0", o.coef0);
  add("degree", o.degree), add("gamma", o.gamma), add("cacheSize", o.cacheSize);
  add("foldCount", o.foldCount), add("probability", o.probability), add("shrinking", o.shrinking);
  add("gpuDevice", o.gpuDevice), add("indexBase", o.indexBase), add("randomSeed", o.randomSeed);
  add("algorithmName", o.algorithmName), add("kernelName", o.kernelName);
  add("testFeatures", o.testFeatures), add("testSamples", o.testSamples);
  add("maxIterations", o.maxIterations), add("denseMatrix", o.denseMatrix);
  add("resetTestSize", o.resetTestSize), add("verbose", zel::verbose);
  add("inputFile", o.inputFile), add("modelFile", o.modelFile), add("outputFile", o.outputFile);
  return text;
}

std::string changed(std::string text, const std::string& name, const std::string& value) {
  const auto begin = ("\n" + text).find("\n" + name + "=");
  if (begin == std::string::npos) return "no setting " + name;
  const auto end = text.find('\n', begin);
  return text.replace(begin, end - begin, name + "=" + value);
}

const std::string defaults =
    "svmType=0\nkernelType=2\ncost=1\ntolerance=0.001\nepsilon=0.1\nnu=0.5\nweights=\nxScale=\n"
    "yScale=\nsaveFile=\nrestoreFile=\ncoef0=0\ndegree=3\ngamma=0\ncacheSize=100\nfoldCount=1\n"
    "probability=0\nshrinking=1\ngpuDevice=0\nindexBase=1\nrandomSeed=0\n"
    "algorithmName=smo-C-classification\nkernelName=radial\ntestFeatures=5\ntestSamples=12\n"
    "maxIterations=0\ndenseMatrix=0\nresetTestSize=0\nverbose=1\ninputFile=\nmodelFile=\n"
    "outputFile=\n";

std::string defaultsOf(const std::string& tool) {
  if (tool == "zelsvm-scale") return changed(defaults, "xScale", "-1:1");
  if (tool == "zelsvm-test") return changed(defaults, "denseMatrix", "1");
  return defaults;
}

TEST(Options, DefaultsOfEveryTool) {
  for (const std::string tool : {"zelsvm-train", "zelsvm-predict", "zelsvm-scale", "zelsvm-test"}) {
    const ZelSvmOpt options = parse({tool});
    EXPECT_EQ(settings(options), defaultsOf(tool)) << tool;
    EXPECT_EQ(options.toolName, tool);
  }
}

struct OptionCase {
  char letter;
  std::string tools;  // initials of the tools that know it
  std::string setting;
  std::string good, goodValue;
  std::string bad, badValue;  // unused by options without an argument
};

const std::vector<OptionCase> optionCases = {
    {'s', "ET", "svmType", "3", "3", "nu", "0"},
    {'t', "ET", "kernelType", "1", "1", "rbf", "0"},
    {'c', "ET", "cost", "10.5", "10.5", "ten", "0"},
    {'e', "ET", "tolerance", "1e-2", "0.01", "e", "0"},
    {'p', "ET", "epsilon", ".25", "0.25", "-", "0"},
    {'n', "ET", "nu", "0.125", "0.125", "", "0"},
    {'w', "ET", "weights", "1:2 -1:0.5", "1:2 -1:0.5", "?", "?"},
    {'x', "ETS", "xScale", "0:1", "0:1", "", ""},
    {'y', "ETS", "yScale", "-2:2", "-2:2", "x", "x"},
    {'s', "S", "saveFile", "/tmp/a.range", "/tmp/a.range", "-", "-"},
    {'r', "S", "restoreFile", "b.range", "b.range", "", ""},
    {'r', "ET", "coef0", "-1.5", "-1.5", "x", "0"},
    {'d', "ET", "degree", "2.5", "2.5", "two", "0"},
    {'g', "ET", "gamma", "+0.5", "0.5", "1/2", "1"},
    {'m', "ET", "cacheSize", "1000", "1000", "MB", "0"},
    {'v', "ET", "foldCount", "5", "5", "x", "0"},
    {'b', "EPT", "probability", "2", "1", "yes", "0"},
    {'k', "ET", "shrinking", "0", "0", "x", "0"},
    {'G', "EPT", "gpuDevice", "-1", "-1", "x", "0"},
    {'I', "EPST", "indexBase", "0", "0", "1x", "1"},
    {'R', "ET", "randomSeed", "7", "7", "x", "0"},
    {'L', "ET", "maxIterations", "18446744073709551615", "18446744073709551615", "x", "0"},
    {'S', "T", "algorithmName", "smo", "smo", "", ""},
    {'K', "T", "kernelName", "linear", "linear", "", ""},
    {'M', "T", "testFeatures", "3", "3", "x", "0"},
    {'N', "T", "testSamples", "4", "4", "x", "0"},
    {'T', "T", "resetTestSize", "", "1", "", ""},
    {'X', "EP", "denseMatrix", "", "1", "", ""},
    {'q', "EPST", "verbose", "", "0", "", ""},
};

constexpr char initial(const std::string& tool) {
  return tool == "zelsvm-train"     ? 'E'
         : tool == "zelsvm-predict" ? 'P'
         : tool == "zelsvm-scale"   ? 'S'
                                    : 'T';
}

bool isSwitch(char letter) { return std::string("TXqh").find(letter) != std::string::npos; }

class OptionsOfTool : public testing::TestWithParam<const char*> {
 protected:
  const std::string tool = GetParam();
  [[nodiscard]] bool knows(const OptionCase& option) const {
    return option.tools.find(initial(tool)) != std::string::npos;
  }
};

TEST_P(OptionsOfTool, EachFillsItsOwnSetting) {
  int tried = 0;
  for (const OptionCase& option : optionCases) {
    if (!knows(option)) continue;
    ++tried;
    const std::string dash = std::string("-") + option.letter;
    const auto expected = changed(defaultsOf(tool), option.setting, option.goodValue);
    if (isSwitch(option.letter)) {
      EXPECT_EQ(settings(parse({tool, dash})), expected) << dash;
      continue;
    }
    EXPECT_EQ(settings(parse({tool, dash, option.good})), expected) << dash;
    EXPECT_EQ(settings(parse({tool, dash + option.good})), expected) << dash << " attached";
    EXPECT_EQ(settings(parse({tool, dash, option.bad})),
              changed(defaultsOf(tool), option.setting, option.badValue))
        << dash << " with " << option.bad;
  }
  EXPECT_EQ(tried, std::string(tool) == "zelsvm-train"     ? 22
                   : std::string(tool) == "zelsvm-predict" ? 5
                   : std::string(tool) == "zelsvm-scale"   ? 6
                                                           : 26);
}

TEST_P(OptionsOfTool, ForeignAndUnknownLettersDoNothing) {
  for (int letter = '!'; letter <= '~'; ++letter) {
    if (letter == '-' || letter == '/') continue;
    const auto known = [&](const OptionCase& o) { return o.letter == letter && knows(o); };
    if (std::any_of(optionCases.begin(), optionCases.end(), known)) continue;
    const std::string dash = std::string("-") + static_cast<char>(letter);
    EXPECT_EQ(settings(parse({tool, dash, "file"})), changed(defaultsOf(tool), "inputFile", "file"))
        << dash;
  }
}

TEST_P(OptionsOfTool, MissingArgumentIsIgnored) {
  for (const OptionCase& option : optionCases) {
    if (!knows(option) || isSwitch(option.letter)) continue;
    const std::string dash = std::string("-") + option.letter;
    EXPECT_EQ(settings(parse({tool, dash})), defaultsOf(tool)) << dash;
  }
}

INSTANTIATE_TEST_SUITE_P(Tools, OptionsOfTool,
                         testing::Values("zelsvm-train", "zelsvm-predict", "zelsvm-scale",
                                         "zelsvm-test"),
                         [](const auto& tool) { return std::string(tool.param).substr(7); });

TEST(Options, NumbersEndWhereStreamsEndThem) {
  EXPECT_EQ(parse({"zelsvm-train", "-c", " \t12.5abc"}).cost, 12.5);
  EXPECT_EQ(parse({"zelsvm-train", "-c", "1,5"}).cost, 1.0);
  EXPECT_EQ(parse({"zelsvm-train", "-t", "3.9"}).kernelType, 3);
  EXPECT_EQ(parse({"zelsvm-train", "-m", "0x10"}).cacheSize, 0U);
  EXPECT_EQ(parse({"zelsvm-train", "-b", "-1"}).probability, true);
  EXPECT_EQ(parse({"zelsvm-train", "-b", "0.9"}).probability, false);
}

TEST(Options, LastOfARepeatedOptionWins) {
  const ZelSvmOpt options = parse({"zelsvm-train", "-c", "1", "-x0:1", "-c", "2", "-x", "0:2"});
  EXPECT_EQ(options.cost, 2.0);
  EXPECT_EQ(options.xScale, "0:2");
}

TEST(Options, EmptyBoundsReplaceTheDefaultOfTheScaleTool) {
  EXPECT_EQ(parse({"zelsvm-scale", "-x", ""}).xScale, "");
}

TEST(Options, VerboseIsSetAnewByEveryParse) {
  parse({"zelsvm-train", "-q"});
  EXPECT_FALSE(zel::verbose);
  parse({"zelsvm-train"});
  EXPECT_TRUE(zel::verbose);
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
            changed(defaults, "inputFile", "10"));
  const char* const nothing = nullptr;
  EXPECT_EQ(ZelSvmOpt(0, &nothing).toolName, "zelsvm");
}

TEST(Options, ResetOverridesTheTestSize) {
  const ZelSvmOpt options = parse({"zelsvm-test", "-T", "-M", "3", "-N", "4"});
  EXPECT_EQ(options.testFeatures, 5U);
  EXPECT_EQ(options.testSamples, 12U);
}

TEST(Options, CygwinTerminalIsRefused) {
  ASSERT_EQ(setenv("TERM", "CygWin", 1), 0);
  EXPECT_EXIT(parse({"zelsvm-train"}), testing::ExitedWithCode(1),
              "^Running zelsvm in Cygwin is not supported.\n$");
  ASSERT_EQ(setenv("TERM", "cygwin-xterm", 1), 0);
  EXPECT_EQ(parse({"zelsvm-train"}).toolName, "zelsvm-train");
  ASSERT_EQ(unsetenv("TERM"), 0);
  EXPECT_EQ(parse({"zelsvm-train"}).toolName, "zelsvm-train");
}

TEST(RandomData, HoldsTheQuotientsOfTheSequence) {
  constexpr int count = 200 * 500;
  std::vector<double> expected(count);
  zel::seedRandom(7);
  for (double& value : expected) value = zel::nextRandom() == 32767 ? 1.0 : 0.0;
  ASSERT_GT(std::count(expected.begin(), expected.end(), 1.0), 0) << "a seed that shows nothing";

  const ZelSvmOpt options = parse({"zelsvm-test", "-M", "200", "-N", "500"});
  zel::seedRandom(7);
  const double* const features = options.randomFeatures();
  EXPECT_EQ(std::vector<double>(features, features + count), expected);
  EXPECT_EQ(options.randomFeatures(), features) << "drawn once only";
}

TEST(RandomData, LabelsFollowTheFeaturesInTheSequence) {
  constexpr int count = 400000;
  const ZelSvmOpt options = parse({"zelsvm-test", "-N", "400000"});
  std::vector<double> expected(count);
  zel::seedRandom(7);
  for (int i = 0; i < 5 * count; ++i) zel::nextRandom();
  for (double& label : expected) label = zel::nextRandom() == 32767 ? 1.0 : -1.0;
  ASSERT_GT(std::count(expected.begin(), expected.end(), 1.0), 0) << "a seed that shows nothing";

  zel::seedRandom(7);
  options.randomFeatures();
  const double* const labels = options.randomLabels();
  EXPECT_EQ(std::vector<double>(labels, labels + count), expected);
  EXPECT_EQ(options.randomLabels(), labels) << "drawn once only";
}

TEST(RandomData, ImpossibleSizesAreRefused) {
  // The product of these two counts wraps around to 0.
  const ZelSvmOpt wrapping = parse({"zelsvm-test", "-M", "4294967296", "-N", "4294967296"});
  EXPECT_THROW(wrapping.randomFeatures(), std::bad_alloc);
  const ZelSvmOpt large = parse({"zelsvm-test", "-N", "1000000000000000"});
  EXPECT_THROW(large.randomLabels(), std::bad_alloc);
}

}  // namespace
