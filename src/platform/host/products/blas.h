// The processor's BLAS, loaded when the first product needs it.
#pragma once

namespace zelsvm {

// To be called before a product is computed. Loads the BLAS at the first call, with work memory for
// every thread; any thread may call. Throws std::runtime_error when that memory is not there or the
// library cannot be loaded.
void requireBlas();

}  // namespace zelsvm
