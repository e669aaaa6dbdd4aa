#include "base/output/file_warnings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/warning_log.h"

namespace {

using Sentences = std::vector<std::string>;
using zel::NumberExtent;

Sentences told(const zel::FileWarnings& warnings) {
  zeltest::WarningLog log;
  warnings.tell();
  return log.sentences;
}

TEST(FileWarnings, TellKindsWithTheirFirstPlaceAndCount) {
  zel::FileWarnings warnings("in");
  const std::string_view line = "cat 1:x 2:y dog";
  warnings.beginLine("");
  warnings.beginLine(line);
  warnings.addNumber(line.substr(6, 1), "value", NumberExtent::none);
  warnings.addNumber(line.substr(0, 3), "label", NumberExtent::none);
  warnings.addNumber(line.substr(10, 1), "value", NumberExtent::none);
  warnings.addNumber(line.substr(4, 1), "index", NumberExtent::all);
  warnings.add(line.substr(12), "text", "is ignored");
  warnings.addMissing("line", "it counts as 0");
  const Sentences expected = {"in:2:7: value \"x\" is no number and counts as 0 (the first of 2)",
                              "in:2:1: label \"cat\" is no number and counts as 0",
                              "in:2:13: text \"dog\" is ignored", "in: no line: it counts as 0"};
  EXPECT_EQ(told(warnings), expected);
  warnings.clear();
  EXPECT_EQ(told(warnings), Sentences{});
}

TEST(FileWarnings, ForgetALine) {
  zel::FileWarnings warnings("in");
  for (const std::string_view line : {"a", "b c", "d e"}) {
    warnings.beginLine(line);
    warnings.add(line, "line", "is odd");
    warnings.add(line, "line", "is odd");
    if (line != "a") warnings.add(line, "line", "is long");
    if (line != "d e") continue;
    warnings.forgetLine();
    warnings.forgetLine();
  }
  EXPECT_EQ(told(warnings), (Sentences{"in:1:1: line \"a\" is odd (the first of 4)",
                                       "in:2:1: line \"b c\" is long"}));
}

TEST(FileWarnings, AppendWhatLaterLinesHave) {
  zel::FileWarnings warnings("in");
  zel::FileWarnings later("in", 7);
  for (zel::FileWarnings* const part : {&warnings, &later}) {
    const std::string_view line = "a b";
    part->beginLine(line);
    part->add(line.substr(2), "line", "is odd");
    if (part == &later) part->add(line, "line", "is long");
  }
  warnings.append(later);
  EXPECT_EQ(told(warnings), (Sentences{"in:1:3: line \"b\" is odd (the first of 2)",
                                       "in:8:1: line \"a b\" is long"}));
}

TEST(FileWarnings, QuoteTextThatATerminalTakes) {
  EXPECT_EQ(zel::quoted("a\x1b[1m\tb\x7f\xc3\xa9"), "\"a?[1m?b?\xc3\xa9\"");
  EXPECT_EQ(zel::quoted(std::string(40, 'x')), '"' + std::string(40, 'x') + '"');
  EXPECT_EQ(zel::quoted(std::string(41, 'x')), '"' + std::string(40, 'x') + "...\"");
}

}  // namespace
