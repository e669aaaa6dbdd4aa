// A data file read as sparse and as dense rows, counted from 0 and from 1: both kinds must take or
// refuse it alike and hold the same samples, as they are and scaled.
#include <algorithm>
#include <memory>
#include <string>

#include "data/bounds.h"
#include "files/read_data.h"
#include "fuzzing.h"
#include "memory_file.h"

namespace {

using zelfuzz::require;
using Matrix = zelmag::AbstractMatrix<double>;

// Beyond this the two kinds are not compared: a dense copy would take too long, or not be possible.
constexpr std::uint64_t comparedElements = 1 << 16;

bool sameNumber(double a, double b) { return a == b || (a != a && b != b); }

void requireSameRows(const Matrix& a, const Matrix& b) {
  zelsvm::HostVector<double> rowA(a.cols());
  zelsvm::HostVector<double> rowB(b.cols());
  for (std::uint64_t i = 0; i < a.rows(); ++i) {
    a.copyRow(rowA.data(), i, true);
    b.copyRow(rowB.data(), i, true);
    require(std::equal(rowA.data(), rowA.data() + a.cols(), rowB.data(), sameNumber),
            "sparse and dense rows are the same");
  }
}

void compare(zelsvm::UserFileReader<double>& sparse, zelsvm::UserFileReader<double>& dense) {
  require(sparse.rows() == dense.rows() && sparse.cols() == dense.cols(), "sizes are the same");
  require(std::equal(sparse.leading().data(), sparse.leading().data() + sparse.leading().size(),
                     dense.leading().data(), sameNumber),
          "labels are the same");
  const auto a = sparse.matrix();
  const auto b = dense.matrix();
  // Of few features in use the sparse matrix has no others, which are left out of scaling.
  if (const auto all = zelmag::movedTo(b->features(), *a, zelmag::Unlisted::leftOut))
    return requireSameRows(*all, *b);
  requireSameRows(*a, *b);
  zelsvm::HostVector<zel::Interval> boundsA(a->cols());
  zelsvm::HostVector<zel::Interval> boundsB(b->cols());
  a->collectBounds(boundsA);
  b->collectBounds(boundsB);
  requireSameRows(*a->scaledCopy({-1, 1}, boundsA), *b->scaledCopy({-1, 1}, boundsB));
}

void readBothWays(const std::string& path, std::uint64_t indexBase) {
  const auto sparse = zelsvm::createReader<double>(path, indexBase, false);
  const auto dense = zelsvm::createReader<double>(path, indexBase, true);
  const bool sparseTaken = zelfuzz::accepts([&] { sparse->read(); });
  if (sparseTaken && sparse->cols() * sparse->rows() > comparedElements) return;
  const bool denseTaken = zelfuzz::accepts([&] { dense->read(); });
  if (sparse->cols() * sparse->rows() > comparedElements) return;
  require(sparseTaken == denseTaken, "both kinds take or refuse a file alike");
  // The tools refuse a model where they want data.
  if (sparseTaken && !sparse->isModel()) compare(*sparse, *dense);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const zelfuzz::MemoryFile file(zelfuzz::textOf(data, size));
  readBothWays(file.path(), 0);
  readBothWays(file.path(), 1);
  return 0;
}
