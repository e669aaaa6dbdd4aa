// What readers warn of: data files as sparse and as dense rows, and models.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "files/read_data.h"
#include "support/temp_file.h"
#include "support/warning_log.h"

namespace {

using Sentences = std::vector<std::string>;

// The path left out.
Sentences warningsOf(const std::string& text, bool dense, std::uint64_t base) {
  const zeltest::TempFile file(text);
  zeltest::WarningLog log;
  zelsvm::createReader<double>(file.path(), base, dense)->read();
  for (std::string& sentence : log.sentences)
    if (sentence.starts_with(file.path())) sentence.erase(0, file.path().size());
  return log.sentences;
}

const std::string more = " goes on behind its number, which is ignored";
const std::string none = " is no number and counts as 0";
const std::string beyond = " is out of range and counts as another number";
const std::string skipped = " has no feature and is skipped";
const std::string ignored = " at the end of the line is ignored";

TEST(DataWarnings, NameKindAndFirstPlace) {
  struct Case {
    std::string text;
    Sentences warnings;
  };
  const Case cases[] = {
      {"+1 1:0.5 3:-1 \n\n \t\r\n-1\t0:1e-3  2:0x1p-2\r\n1 1: 5 2:12345678901234567890\n", {}},
      {"1 5:1 3:2 4:nan\n", {}},  // any order is as good
      {"cat 1:1\n2 1:1\ndog 1:1\n", {":1:1: label \"cat\"" + none + " (the first of 2)"}},
      {"1 1:1\n2abc 1:1\n", {":2:1: label \"2abc\"" + more}},
      {"1 1:abc 2:2x 3:1,5\n",
       {":1:5: value \"abc\"" + none, ":1:11: value \"2x\"" + more + " (the first of 2)"}},
      {"1 1::5 2:1e400\n", {":1:5: value \":5\"" + none, ":1:10: value \"1e400\"" + beyond}},
      {"1 x:1 4x:1\n", {":1:3: index \"x\"" + none, ":1:7: index \"4x\"" + more}},
      {"1 2 7:3\n", {":1:3: index \"2 7\"" + more}},
      {"1 1:2 7\n2 1:2 9:\n", {":1:7: text \"7\"" + ignored + " (the first of 2)"}},
      {"1 1:2 # remark\n", {":1:7: text \"# remark\"" + ignored}},
      {"# remark\n3\n1 1:2\n4 5 \n", {":1:1: line \"#\"" + skipped + " (the first of 3)"}},
      // The count is made a second time.
      {"cat 1:2 2:3:4\n", {":1:1: label \"cat\"" + none, ":1:11: value \"3:4\"" + more}},
  };
  for (const auto& [text, warnings] : cases)
    for (const bool dense : {false, true})
      EXPECT_EQ(warningsOf(text, dense, 0), warnings) << text << dense;
}

TEST(DataWarnings, NameFeaturesThatRepeat) {
  const std::string text = "1 7:1 3:1 7:2\n2 3:1 3:2 3:3\n3 1:1 2:1\n4 2:1 02x:1\n";
  EXPECT_EQ(warningsOf(text, false, 1),
            (Sentences{":1:11: feature \"7\" stands in its line again: its last value counts "
                       "(the first of 4)",
                       ":4:7: index \"02x\"" + more}));
  EXPECT_EQ(warningsOf("1 7:1 3:1 7:2\n", true, 1),
            (Sentences{":1:11: feature \"7\" stands in its line again: its last value counts"}));
}

// A model with two vectors, with these lines in place of the one that begins so.
std::string model(const std::string& begin, const std::string& lines) {
  std::string text =
      "SvmType: smo-C-classification\nKernelType: polynomial\nDegree: 2\nGamma: 0.5\nCoef0: 1\n"
      "X-scale: 0 1\n  0: 0 4\nY-scale: 0 1\n   1.5 9\nNrClass: 2\nTotalSV: 2\nRho: 0.5\n"
      "Labels: 1 2\nNrSV: 1 1\nSV:\n1 1:1\n-1 1:2\n";
  const auto place = text.find(begin);
  return text.replace(place, text.find('\n', place + begin.size()) + 1 - place, lines);
}

TEST(ModelWarnings, NameKindAndFirstPlace) {
  struct Case {
    std::string text;
    Sentences warnings;
  };
  const Case cases[] = {
      {model("Gamma:", "Gamma: 0.5\n"), {}},
      {model("Gamma:", "Gamma: abc\n"), {":4:8: Gamma: \"abc\"" + none}},
      {model("Gamma:", "Gamma: 2x 3\n"),
       {":4:8: Gamma: \"2x\"" + more, ":4:11: text \"3\"" + ignored}},
      {model("Gamma:", ""),
       {": no \"Gamma:\" line: it counts as one divided by the number of features"}},
      {model("Degree:", ""), {": no \"Degree:\" line: it counts as 0"}},
      {model("Coef0:", "Coef: 1\n"),
       {":5:1: line \"Coef:\" is unknown and ignored", ": no \"Coef0:\" line: it counts as 0"}},
      {model("KernelType: polynomial\nDegree: 2\nGamma: 0.5\nCoef0:", "KernelType: linear\n"), {}},
      {model("NrClass:", "NrClass: 2\nNrClass: 2\n"),
       {":11:1: line \"NrClass:\" replaces an earlier one"}},
      {model("NrClass:", ""), {": no \"NrClass:\" line: it counts as 2"}},
      {model("TotalSV:", "TotalSV:\n"),
       {":11:1: line \"TotalSV:\" has no value and is ignored",
        ": no \"TotalSV:\" line: the support vectors are not counted"}},
      {model("Rho:", "Rho: abc\n"), {":12:6: Rho: \"abc\"" + none}},
      {model("Labels:", "Labels: 1 1\n"), {":13:11: label \"1\" is there already"}},
      {model("  0:", "  x: 0 4y\n"), {":7:8: bound \"4y\"" + more, ":7:3: feature \"x\"" + none}},
      {model("  0:", "  0: 4\n"),
       {":7:3: line \"0:\" lacks a number and is ignored",
        ": no bounds below \"X-scale:\": they count as 0"}},
      {model("X-scale:", "X-scale: 0\n"),
       {":6:1: line \"X-scale:\" lacks a number and is ignored",
        ":7:3: line \"0:\" is unknown and ignored"}},
      {model("   1.5", ""), {": no bounds below \"Y-scale:\": they count as 0"}},
      {model("1 1:1", "abc 1:1\n"), {":16:1: coefficient \"abc\"" + none}},
      {model("1 1:1", "1x 1:1 2\n"),
       {":16:1: coefficient \"1x\"" + more, ":16:8: text \"2\"" + ignored}},
      {model("1 1:1", "0.5\n"), {":16:1: support vector \"0.5\" has no feature and is left out"}},
  };
  for (const auto& [text, warnings] : cases)
    for (const bool dense : {false, true})
      EXPECT_EQ(warningsOf(text, dense, 1), warnings) << text << dense;
}

}  // namespace
