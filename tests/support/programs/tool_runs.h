// Runs of the tools that must end in a known way, and what they print and write taken apart.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "support/programs/tool_process.h"
#include "support/samples.h"

namespace zeltest {

using Command = std::vector<std::string>;

// The command's words, separated by single blanks.
Command words(const std::string& line);

// What is printed behind the banner: the tool's name, a version and an empty line. Fails when the
// banner is not there.
std::string afterBanner(const ToolResult& result, const std::string& tool);

// Runs the tool named first, which must end well, and returns what it printed behind the banner.
std::string succeed(const Workspace& workspace, const Command& command,
                    const RunSettings& settings = {});

// Runs the tool named first, which must end with this message, status 1 and no new file. All that
// may stand before the message is the banner, or what matches the pattern.
void refuse(const Workspace& workspace, const Command& command, const std::string& message,
            const std::string& before = "");

// Where the example data set lies.
std::string cancerFile();

// The samples in the data files' grammar, zeros behind the first feature left out.
std::string fileText(const Samples& samples);

// All tokens between blanks, colons and line feeds as numbers; what is none counts as 0.
std::vector<double> numbersIn(const std::string& text);

// The same numbers up to a relative or absolute difference of the tolerance.
void expectNear(const std::vector<double>& a, const std::vector<double>& b, double tolerance);

// What stands behind the first such text up to the end of its line; fails when there is none.
std::string restOfLine(const std::string& text, const std::string& begin);

// The lines behind the model's header.
std::vector<std::string> vectorLines(const std::string& model);

}  // namespace zeltest
