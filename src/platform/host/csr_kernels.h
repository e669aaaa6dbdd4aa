// Products of consecutive rows of a CSR matrix, built for several instruction sets.
#pragma once

#include <cstdint>

#include "platform/host/isa.h"

namespace zel::inline ZEL_PLATFORM {

// Rows begin … end - 1 of the matrix that the three arrays hold.
struct CsrRows {
  const int* offsets;
  const int* indices;
  const double* values;
  std::int64_t begin;
  std::int64_t end;
};

// Columns of the right-hand matrix that one pass over the rows serves.
inline constexpr int panelColumns = 8;

struct CsrKernels {
  // y[i] = alpha (A x)[i] + beta y[i] for the rows; a beta of 0 never reads y.
  void (*timesVector)(const CsrRows& rows, double alpha, const double* x, double beta, double* y);
  // The same for the first columns of a panel: element (j, c) of the right-hand matrix stands at
  // panel[j * panelColumns + c], all panelColumns of them readable; C is column-major.
  void (*timesPanel)(const CsrRows& rows, double alpha, const double* panel, int columns,
                     double beta, double* C, std::int64_t ldc);
};

CsrKernels csrKernels(Isa isa);

}  // namespace zel::inline ZEL_PLATFORM
