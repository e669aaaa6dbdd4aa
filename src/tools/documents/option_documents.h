// What man pages and completions say about the options, from the option table.
#pragma once

#include <string>

#include "tools/tool.h"

namespace zelsvm_opt {

// The option lists of the tool's man page. That of zelsvm-test holds only what the trainer lacks.
std::string manualOptions(Tool tool);

// For bash and zsh: the options of each tool.
std::string bashOptions();
std::string zshOptions();

}  // namespace zelsvm_opt
