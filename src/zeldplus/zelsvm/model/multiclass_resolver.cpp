#include "zeldplus/zelsvm/model/multiclass_resolver.h"

#include <cstdint>

#include "zeldplus/inc/zelhostmatrix.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

using Votes = zel::HostMatrix<unsigned long long>;

template <typename T>
void castVote(Votes& votes, const HostVector<T>& labels, std::uint64_t sample, T winner) {
  for (std::uint64_t c = 0; c < labels.size(); ++c)
    if (labels[c] == winner) ++votes.row(sample)[c];
}

}  // namespace

template <typename T>
void MulticlassResolver<T>::handle(HostVector<T>& output, const HostVector<T>& decisionValues,
                                   const GenericModel<T>& model) {
  const HostVector<T>& labels = model.labels();
  const std::uint64_t k = labels.size();
  const std::uint64_t n = output.size();
  HostVector<unsigned long long> counters(n * k);
  counters.fill(0);
  Votes votes(counters.data(), k, n);
  const T* d = decisionValues.data();
  for (std::uint64_t i = 0; i < k; ++i)
    for (std::uint64_t j = i + 1; j < k; ++j)
      for (std::uint64_t s = 0; s < n; ++s, ++d)
        if (*d != 0) castVote(votes, labels, s, *d > 0 ? labels[i] : labels[j]);

  for (std::uint64_t s = 0; s < n; ++s) {
    unsigned long long best = 0;
    for (std::uint64_t c = 0; c < k; ++c) {
      if (votes.row(s)[c] <= best) continue;
      best = votes.row(s)[c];
      output.set(s, labels[c]);
    }
  }
}

template class MulticlassResolver<double>;

}  // namespace zelsvm::inline ZEL_PLATFORM
