// The content of a model's bytes, sealed anew: refused, or a model that predicts, whose bytes make
// the same bytes again. As it comes, without its seal, it is refused.
#include "model/model_bytes.h"

#include "data/dense_matrix.h"
#include "fuzzing.h"
#include "model/byte_seal.h"
#include "platform/host/host_machine.h"
#include "prediction/predictor.h"

namespace {

constexpr std::uint64_t mostColumns = 1024;

void predict(const zelsvm::LoadedModel<double>& loaded) {
  const std::uint64_t columns = loaded.model->vectors().cols();
  const bool takesFeatures = loaded.context->kernelType != zelsvm::SVM_KERNEL_PRECOMPUTED;
  if (!takesFeatures || columns > mostColumns) return;
  zelsvm::HostVector<double> values(2 * columns);
  values.fill(0.5);
  const zelmag::DenseMatrix<double> samples(std::move(values), columns, 2);
  zelsvm::GenericPredictor<double> predictor(*loaded.context, *loaded.model);
  zelsvm::HostVector<double> output(2);
  predictor.predict(output, samples);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string content(zelfuzz::textOf(data, size));
  const auto read = [](const std::string& bytes) {
    return zelsvm::modelFromBytes<double>(bytes, zelsvm::hostMachine());
  };
  zelfuzz::require(!zelfuzz::accepts([&] { read(content); }), "bytes without a seal are refused");
  zelfuzz::accepts([&] {
    const std::string bytes = zelsvm::sealed(content);
    const auto loaded = read(bytes);
    predict(loaded);
    const std::string again = zelsvm::modelBytes(*loaded.context, *loaded.model);
    const auto twice = read(again);
    zelfuzz::require(zelsvm::modelBytes(*twice.context, *twice.model) == again,
                     "what was read is written alike");
  });
  return 0;
}
