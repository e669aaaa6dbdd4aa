// The usage texts of the tools.
#pragma once

#include "zelsvm/tool.h"

namespace zelsvm_opt {

// The tool's usage text, each line ended by a line feed; empty for the tools that have none.
const char* usageText(Tool tool);

}  // namespace zelsvm_opt
