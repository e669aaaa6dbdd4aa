#include "zeldplus/zelsvm/model/prediction_file.h"

#include <cstdint>

#include "zeldplus/inc/zelfiles.h"
#include "zeldplus/inc/zeltextoutput.h"

namespace zelsvm::inline ZEL_PLATFORM {

template <typename T>
void writePredictions(const std::string& path, const HostVector<T>& predictions,
                      const HostVector<T>& probabilities, const GenericModel<T>& model) {
  zel::CTextFile file(zel::FileMode::write);
  file.open(path);
  zel::TextOutput output(file);
  const std::uint64_t k = probabilities.size() == 0 ? 0 : model.labels().size();
  if (k != 0) {
    output.put("labels: ");
    for (std::uint64_t c = 0; c < k; ++c) output.put(model.labels()[c]).put(" ");
    output.put("\n");
  }
  for (std::uint64_t s = 0; s < predictions.size(); ++s) {
    output.put(predictions[s]).put(" ");
    for (std::uint64_t c = 0; c < k; ++c) output.put(probabilities[s * k + c]).put(" ");
    output.put("\n");
  }
  output.flush();
  file.close();
}

template void writePredictions(const std::string&, const HostVector<double>&,
                               const HostVector<double>&, const GenericModel<double>&);

}  // namespace zelsvm::inline ZEL_PLATFORM
