// The kernels' static shared variables. They are thread-local variables of functions, which the
// program's own symbol table lists.
#pragma once

namespace zel::device {

// Fills those of the calling thread with values that nobody should read; the thread runs nothing
// but device code.
void poisonSharedVariables(unsigned pattern);

}  // namespace zel::device
