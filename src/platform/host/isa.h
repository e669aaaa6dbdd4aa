// The instruction sets that the vectorised loops are built for.
#pragma once

namespace zel::inline ZEL_PLATFORM {

enum class Isa { baseline, avx2, avx512 };

// The best set that this processor and its system offer.
Isa processorIsa();

}  // namespace zel::inline ZEL_PLATFORM
