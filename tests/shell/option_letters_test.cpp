// Every option of every tool: once with effect, once with a bad value, once where it is unknown.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "shell/command_line.h"
#include "shell/settings.h"

namespace {

using zeltest::changed;
using zeltest::defaultsOf;
using zeltest::parse;
using zeltest::settings;

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

}  // namespace
