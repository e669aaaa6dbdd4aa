// The last line of defence: what becomes of a failure that nobody caught.
#pragma once

#include <functional>

namespace zelsvm_main {

// Runs the body and returns the process's exit status: 0, or 1 after an exception, whose text is
// printed, and after messages were lost; the text then goes to standard error, too. A pipe that
// nobody reads on ends the run without a word, also while reporting.
int runGuarded(const std::function<void()>& body) noexcept;

}  // namespace zelsvm_main
