// Every option of every tool: once with effect in each spelling, once with a bad value, once where
// it is unknown.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "base/errors.h"
#include "support/temp_file.h"
#include "tools/command_line.h"
#include "tools/settings.h"

namespace {

using zeltest::changed;
using zeltest::defaultsOf;
using zeltest::failureOf;
using zeltest::parse;
using zeltest::settings;

struct OptionCase {
  char letter;
  std::string name;
  std::string tools;  // initials of the tools that know it
  std::string setting;
  std::string good, goodValue;
  std::string bad, badValue;  // unused by options without an argument
};

const std::vector<OptionCase> optionCases = {
    {'s', "svm-type", "ET", "svmType", "3", "3", "nu", "0"},
    {'t', "kernel", "ET", "kernelType", "1", "1", "rbf", "0"},
    {'c', "cost", "ET", "cost", "10.5", "10.5", "ten", "0"},
    {'e', "tolerance", "ET", "tolerance", "1e-2", "0.01", "e", "0"},
    {'p', "epsilon", "ET", "epsilon", ".25", "0.25", "-", "0"},
    {'n', "nu", "ET", "nu", "0.125", "0.125", "", "0"},
    {'w', "weights", "ET", "weights", "1:2 -1:0.5", "1:2 -1:0.5", "?", "?"},
    {'x', "x-scale", "ETS", "xScale", "0:1", "0:1", "", ""},
    {'y', "y-scale", "ETS", "yScale", "-2:2", "-2:2", "x", "x"},
    {'s', "save", "S", "saveFile", "/tmp/a.range", "/tmp/a.range", "-", "-"},
    {'r', "restore", "S", "restoreFile", "b.range", "b.range", "", ""},
    {'r', "coef0", "ET", "coef0", "-1.5", "-1.5", "x", "0"},
    {'d', "degree", "ET", "degree", "2.5", "2.5", "two", "0"},
    {'g', "gamma", "ET", "gamma", "+0.5", "0.5", "1/2", "1"},
    {'m', "cache", "ET", "cacheSize", "1000", "1000", "MB", "0"},
    {'v', "folds", "ET", "foldCount", "5", "5", "x", "0"},
    {'b', "probability", "EPT", "probability", "2", "1", "yes", "0"},
    {'k', "shrinking", "ET", "shrinking", "0", "0", "x", "0"},
    {'G', "device", "EPT", "gpuDevice", "-1", "-1", "x", "0"},
    {'I', "index-base", "EPST", "indexBase", "0", "0", "1x", "1"},
    {'R', "seed", "ET", "randomSeed", "7", "7", "x", "0"},
    {'L', "max-iterations", "ET", "maxIterations", "18446744073709551615", "18446744073709551615",
     "x", "0"},
    {'S', "algorithm-name", "T", "algorithmName", "smo", "smo", "", ""},
    {'K', "kernel-name", "T", "kernelName", "linear", "linear", "", ""},
    {'M', "features", "T", "testFeatures", "3", "3", "x", "0"},
    {'N', "samples", "T", "testSamples", "4", "4", "x", "0"},
    {'T', "default-size", "T", "resetTestSize", "", "1", "", ""},
    {'X', "dense", "EP", "denseMatrix", "", "1", "", ""},
    {'q', "quiet", "EPST", "verbose", "", "0", "", ""},
};

constexpr char initial(const std::string& tool) {
  return tool == "zelsvm-train"     ? 'E'
         : tool == "zelsvm-predict" ? 'P'
         : tool == "zelsvm-scale"   ? 'S'
                                    : 'T';
}

bool isSwitch(char letter) { return std::string("TXqh").find(letter) != std::string::npos; }

// An argument of an odd form is told once, if it was to be a number.
std::size_t expectedWarnings(const OptionCase& option) {
  return option.bad == option.badValue ? 0 : 1;
}

class OptionsOfTool : public testing::TestWithParam<const char*> {
 protected:
  const std::string tool = GetParam();
  [[nodiscard]] bool knows(const OptionCase& option) const {
    return option.tools.find(initial(tool)) != std::string::npos;
  }
  void expectGood(const OptionCase& option, const std::vector<std::string>& words) const {
    std::vector<std::string> command = {tool};
    command.insert(command.end(), words.begin(), words.end());
    const auto options = parse(command);
    EXPECT_EQ(settings(options), changed(defaultsOf(tool), option.setting, option.goodValue))
        << words[0];
    EXPECT_EQ(options.warnings, std::vector<std::string>{}) << words[0];
  }
};

TEST_P(OptionsOfTool, EachFillsItsOwnSetting) {
  int tried = 0;
  for (const OptionCase& option : optionCases) {
    if (!knows(option)) continue;
    ++tried;
    const std::string dash = std::string("-") + option.letter;
    const std::string name = "--" + option.name;
    if (isSwitch(option.letter)) {
      expectGood(option, {dash});
      expectGood(option, {name});
      continue;
    }
    for (const std::vector<std::string>& words : {std::vector{dash, option.good},
                                                  {dash + option.good},
                                                  {name, option.good},
                                                  {name + "=" + option.good}})
      expectGood(option, words);
    const auto odd = parse({tool, dash, option.bad});
    EXPECT_EQ(settings(odd), changed(defaultsOf(tool), option.setting, option.badValue))
        << dash << " with " << option.bad;
    EXPECT_EQ(odd.warnings.size(), expectedWarnings(option)) << dash << " with " << option.bad;
  }
  EXPECT_EQ(tried, tool == "zelsvm-train"     ? 22
                   : tool == "zelsvm-predict" ? 5
                   : tool == "zelsvm-scale"   ? 6
                                              : 26);
}

TEST_P(OptionsOfTool, ForeignAndUnknownLettersAreIgnoredWithAWarning) {
  for (int letter = '!'; letter <= '~'; ++letter) {
    if (letter == '-' || letter == '/' || letter == 'h') continue;
    const auto known = [&](const OptionCase& o) { return o.letter == letter && knows(o); };
    if (std::any_of(optionCases.begin(), optionCases.end(), known)) continue;
    const std::string dash = std::string("-") + static_cast<char>(letter);
    const auto options = parse({tool, dash, "file"});
    EXPECT_EQ(settings(options), changed(defaultsOf(tool), "inputFile", "file")) << dash;
    EXPECT_EQ(options.warnings.size(), 1U) << dash;
  }
  EXPECT_EQ(parse({tool, "-h"}).warnings.size(), 0U);
}

TEST_P(OptionsOfTool, MissingArgumentIsIgnoredOrRefused) {
  for (const OptionCase& option : optionCases) {
    if (!knows(option) || isSwitch(option.letter)) continue;
    const std::string dash = std::string("-") + option.letter;
    const auto options = parse({tool, dash});
    EXPECT_EQ(settings(options), defaultsOf(tool)) << dash;
    EXPECT_EQ(options.warnings.size(), 1U) << dash;
    EXPECT_EQ(failureOf<zel::AppException>([&] {
                parse({tool, "--" + option.name});
              }),
              "Option --" + option.name + " lacks its argument.");
  }
}

INSTANTIATE_TEST_SUITE_P(Tools, OptionsOfTool,
                         testing::Values("zelsvm-train", "zelsvm-predict", "zelsvm-scale",
                                         "zelsvm-test"),
                         [](const auto& tool) { return std::string(tool.param).substr(7); });

}  // namespace
