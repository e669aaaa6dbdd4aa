#include "prediction/prediction_file.h"

#include <cstdint>
#include <limits>

#include "base/files.h"
#include "base/output/text_output.h"
#include "files/row_output.h"

namespace zelsvm {
namespace {

// Predicted numbers keep four digits of the range of targets that their model knows. Without such a
// range the model's own offset has six digits, and more in a prediction would say nothing.
template <typename T>
double resolutionOf(const GenericModel<T>& model) {
  if (model.hasLabels()) return 0;
  if (!model.scale.scalesTargets()) return std::numeric_limits<double>::infinity();
  return 1e-4 * (model.scale.yBounds().upper - model.scale.yBounds().lower);
}

}  // namespace

template <typename T>
void writePredictions(const std::string& path, const HostVector<T>& predictions,
                      const HostVector<T>& probabilities, const GenericModel<T>& model) {
  zel::CTextFile file(zel::FileMode::write);
  file.open(path);
  zel::TextOutput output(file);
  const std::uint64_t k = probabilities.size() == 0 ? 0 : model.labels().size();
  if (k != 0) {
    output.put("labels: ");
    for (std::uint64_t c = 0; c < k; ++c) output.put(model.labels()[c], 0).put(" ");
    output.put("\n");
  }
  const double resolution = resolutionOf(model);
  putRows(predictions.size(), 1 + k, output, [&](std::uint64_t s, zel::TextOutput& text) {
    text.put(predictions[s], resolution).put(" ");
    for (std::uint64_t c = 0; c < k; ++c) text.put(probabilities[s * k + c]).put(" ");
    text.put("\n");
  });
  output.flush();
  file.close();
}

template void writePredictions(const std::string&, const HostVector<double>&,
                               const HostVector<double>&, const GenericModel<double>&);

}  // namespace zelsvm
