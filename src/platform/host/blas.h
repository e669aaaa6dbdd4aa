// The processor's BLAS, loaded when the first product needs it.
#pragma once

namespace zel::inline ZEL_PLATFORM {

// Must have returned true before a product is computed. Loads the BLAS at the first call, with work
// memory for every thread; any thread may call. False when that memory is not there; throws
// std::runtime_error when the library cannot be loaded.
bool prepareBlas();

}  // namespace zel::inline ZEL_PLATFORM
