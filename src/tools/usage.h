// What the tools say about themselves.
#pragma once

#include <string>

#include "tools/options.h"
#include "tools/tool.h"

namespace zelsvm_opt {

// The tool's usage text, each line ended by a line feed; empty for the tools that have none.
std::string usageText(Tool tool);

// What --version or --help asks for; empty where neither was given.
std::string answerTo(const ZelSvmOpt& options);

}  // namespace zelsvm_opt
