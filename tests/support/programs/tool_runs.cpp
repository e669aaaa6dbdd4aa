#include "support/programs/tool_runs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <sstream>

#include "text_match.h"

namespace zeltest {

Command words(const std::string& line) {
  Command result;
  std::istringstream stream(line);
  for (std::string word; std::getline(stream, word, ' ');) result.push_back(word);
  return result;
}

std::string afterBanner(const ToolResult& result, const std::string& tool) {
  const auto end = result.out.find("\n\n") + 2;
  if (!matches(result.out.substr(0, end), tool + " [^ \n]+\n\n")) {
    ADD_FAILURE() << "no banner of " << tool << " in: " << testing::PrintToString(result);
    return "no banner";
  }
  return result.out.substr(end);
}

namespace {

ToolResult start(const Workspace& workspace, const Command& command, const RunSettings& settings) {
  return workspace.run(command.at(0), {command.begin() + 1, command.end()}, settings);
}

}  // namespace

std::string succeed(const Workspace& workspace, const Command& command,
                    const RunSettings& settings) {
  const ToolResult result = start(workspace, command, settings);
  EXPECT_EQ(result.status, 0) << testing::PrintToString(command) << testing::PrintToString(result);
  EXPECT_EQ(result.err, "");
  return afterBanner(result, command[0]);
}

void refuse(const Workspace& workspace, const Command& command, const std::string& message,
            const std::string& before) {
  SCOPED_TRACE(testing::PrintToString(command));
  const auto files = workspace.files();
  const ToolResult result = start(workspace, command, {});
  EXPECT_EQ(result.status, 1) << testing::PrintToString(result);
  EXPECT_EQ(result.err, "");
  std::string text = afterBanner(result, command[0]);
  const auto position = text.find(message);
  if (position != std::string::npos && matches(text.substr(0, position), before))
    text.erase(0, position);
  EXPECT_EQ(text, message + "\n");
  EXPECT_EQ(workspace.files(), files);
}

std::string cancerFile() { return ZEL_EXAMPLES "/cancer/cancer.txt"; }

std::string fileText(const Samples& samples) {
  std::ostringstream text;
  for (std::uint64_t i = 0; i < samples.rows(); ++i) {
    text << samples.labels[i];
    for (std::uint64_t k = 0; k < samples.cols; ++k)
      if (k == 0 || samples.row(i)[k] != 0) text << ' ' << k + 1 << ':' << samples.row(i)[k];
    text << '\n';
  }
  return text.str();
}

std::vector<double> numbersIn(const std::string& text) {
  std::vector<double> numbers;
  const char* const separators = " :\n";
  for (auto begin = text.find_first_not_of(separators); begin != std::string::npos;) {
    numbers.push_back(std::strtod(text.c_str() + begin, nullptr));
    begin = text.find_first_not_of(separators, text.find_first_of(separators, begin));
  }
  return numbers;
}

void expectNear(const std::vector<double>& a, const std::vector<double>& b, double tolerance) {
  ASSERT_EQ(a.size(), b.size());
  ASSERT_FALSE(a.empty());
  for (std::size_t i = 0; i < a.size(); ++i)
    ASSERT_NEAR(a[i], b[i], tolerance * std::fmax(1, std::fabs(a[i]))) << "at " << i;
}

std::string restOfLine(const std::string& text, const std::string& begin) {
  const auto position = text.find(begin);
  if (position == std::string::npos) {
    ADD_FAILURE() << "no " << begin << " in: " << text;
    return "";
  }
  const auto rest = position + begin.size();
  return text.substr(rest, text.find('\n', rest) - rest);
}

std::vector<std::string> vectorLines(const std::string& model) {
  std::istringstream stream(model);
  std::vector<std::string> lines;
  bool header = true;
  for (std::string line; std::getline(stream, line);) {
    if (!header) lines.push_back(line);
    if (line == "SV:") header = false;
  }
  return lines;
}

}  // namespace zeltest
