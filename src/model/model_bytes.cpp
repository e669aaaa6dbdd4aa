#include "model/model_bytes.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

#include "base/memory.h"
#include "data/dense_matrix.h"
#include "data/kernel_matrix.h"
#include "data/sparse_matrix.h"
#include "model/byte_seal.h"
#include "model/byte_stream.h"

namespace zelsvm {
namespace {

using zelmag::AbstractMatrix;
using zelmag::FeatureNumbers;

constexpr std::uint64_t mostFeatures = std::uint64_t{1} << 32;

template <typename Vector>
auto spanOf(const Vector& vector) {
  return std::span(vector.data(), vector.size());
}

template <typename T>
void writeSettings(ByteWriter& to, const SvmContext<T>& context) {
  to.whole(std::uint32_t{context.svmType});
  to.whole(std::uint32_t{context.kernelType});
  for (const double value : {context.degree, context.gamma, context.coef0, context.C, context.p,
                             context.nu, context.eps})
    to.number(value);
  to.whole(std::uint64_t{context.weights.size()});
  for (const auto& [label, weight] : context.weights) to.interval({label, weight});
  to.whole(context.limitOfIterations());
  to.whole(context.cacheSize);
  to.flag(context.zeroGamma);
  to.flag(context.sparse);
  to.flag(context.shrinking);
}

SvmParameters readSettings(ByteReader& from) {
  SvmParameters settings;
  const auto svmType = from.whole<std::uint32_t>();
  const auto kernelType = from.whole<std::uint32_t>();
  settings.precomputed = kernelType == SVM_KERNEL_PRECOMPUTED;
  ByteReader::require(svmType < SVM_TYPE_UNSUPPORTED &&
                      (settings.precomputed || kernelType < SVM_KERNEL_UNSUPPORTED));
  settings.svmType = static_cast<int>(svmType);
  settings.kernelType = static_cast<int>(kernelType);
  for (double* const value : {&settings.degree, &settings.gamma, &settings.coef0, &settings.C,
                              &settings.p, &settings.nu, &settings.eps})
    *value = from.number();
  for (std::uint64_t left = from.count(2 * sizeof(double)); left > 0; --left) {
    const zel::Interval weight = from.interval();
    ByteReader::require(settings.weights.emplace(weight.lower, weight.upper).second);
  }
  settings.maxIterations = from.whole<std::uint64_t>();
  settings.cacheSize = from.whole<std::uint64_t>();
  settings.zeroGamma = from.flag();
  settings.sparse = from.flag();
  settings.shrinking = from.flag();
  return settings;
}

void writeFeatures(ByteWriter& to, const FeatureNumbers& features) {
  to.whole(features.count());
  to.flag(features.isListed());
  if (!features.isListed()) return;
  std::vector<std::uint32_t> listed;
  for (std::uint64_t j = 0; j < features.columns(); ++j)
    listed.push_back(static_cast<std::uint32_t>(features[j]));
  to.list(spanOf(std::as_const(listed)));
}

FeatureNumbers readFeatures(ByteReader& from) {
  const auto count = from.whole<std::uint64_t>();
  ByteReader::require(count > 0 && count <= mostFeatures);
  if (!from.flag()) return count;
  auto listed = from.list<std::vector<std::uint32_t>>();
  ByteReader::require(std::is_sorted(listed.begin(), listed.end(), std::less_equal<>()) &&
                      !listed.empty() && listed.back() < count);
  return {count, std::move(listed)};
}

template <typename T>
void writeMatrix(ByteWriter& to, const AbstractMatrix<T>& matrix) {
  writeFeatures(to, matrix.features());
  to.flag(matrix.isSparse());
  to.list(std::span(matrix.values(), matrix.valueCount()));
  if (!matrix.isSparse()) return;
  to.list(std::span(matrix.columnIndices(), matrix.valueCount()));
  to.list(std::span(matrix.rowOffsets(), matrix.rows() + 1));
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> readDense(HostVector<T>&& values,
                                             const FeatureNumbers& features) {
  ByteReader::require(values.size() > 0 && values.size() % features.columns() == 0);
  const std::uint64_t rows = values.size() / features.columns();
  return std::make_unique<zelmag::DenseMatrix<T>>(std::move(values), features, rows);
}

template <typename T>
std::unique_ptr<AbstractMatrix<T>> readMatrix(ByteReader& from) {
  const FeatureNumbers features = readFeatures(from);
  const bool isSparse = from.flag();
  auto values = from.list<HostVector<T>>();
  if (!isSparse) return readDense(std::move(values), features);
  auto columns = from.list<HostVector<int>>();
  auto offsets = from.list<HostVector<int>>();
  ByteReader::require(columns.size() == values.size() && offsets.size() > 1 && offsets[0] == 0 &&
                      std::is_sorted(offsets.data(), offsets.data() + offsets.size()) &&
                      static_cast<std::uint64_t>(offsets[offsets.size() - 1]) == values.size() &&
                      std::all_of(columns.data(), columns.data() + columns.size(), [&](int column) {
                        return column >= 0 &&
                               static_cast<std::uint64_t>(column) < features.columns();
                      }));
  // Predictions take memory by the columns.
  zel::requireHostMemory(features.columns(), sizeof(T));
  const std::uint64_t rows = offsets.size() - 1;
  return std::make_unique<zelmag::SparseMatrix<T>>(std::move(values), std::move(columns),
                                                   std::move(offsets), features, rows);
}

// Support vectors of a precomputed kernel are numbers of training samples.
template <typename T>
std::unique_ptr<AbstractMatrix<T>> readNumbers(ByteReader& from, std::uint64_t trainingSamples) {
  const auto numbers = from.list<zel::IndexList<>>();
  ByteReader::require(numbers.size() > 0 &&
                      std::all_of(numbers.data(), numbers.data() + numbers.size(),
                                  [&](auto number) { return number < trainingSamples; }));
  return std::make_unique<zelmag::KernelMatrix>(numbers, trainingSamples);
}

template <typename T>
void writeScale(ByteWriter& to, const SvmScale<T>& scale) {
  to.interval(scale.xRange());
  to.interval(scale.yRange());
  to.interval(scale.yBounds());
  if (!scale.scalesFeatures()) return;
  const zelmag::BoundsByFeature bounds = scale.boundsByFeature();
  to.whole(std::uint64_t{bounds.size()});
  for (const auto& [feature, ends] : bounds) {
    to.whole(feature);
    to.interval(ends);
  }
}

template <typename T>
void readScale(ByteReader& from, SvmScale<T>& scale) {
  const zel::Interval features = from.interval();
  const zel::Interval targets = from.interval();
  const zel::Interval targetBounds = from.interval();
  zelmag::BoundsByFeature bounds;
  if (features.lower != features.upper)
    for (std::uint64_t left = from.count(3 * sizeof(double)); left > 0; --left) {
      const auto feature = from.whole<std::uint64_t>();
      ByteReader::require(feature < mostFeatures &&
                          (bounds.empty() || bounds.rbegin()->first < feature));
      bounds.emplace_hint(bounds.end(), feature, from.interval());
    }
  scale.assign(features, targets, targetBounds, bounds);
}

template <typename T>
void writeClasses(ByteWriter& to, const GenericModel<T>& model) {
  to.list(spanOf(model.labels()));
  to.list(spanOf(model.classSizes()));
  to.whole(std::uint64_t{model.sigmoids.size()});
  for (const auto& [pair, sigmoid] : model.sigmoids) {
    to.interval({pair.first, pair.second});
    to.interval({sigmoid.A, sigmoid.B});
  }
}

template <typename T>
void readClasses(ByteReader& from, GenericModel<T>& model) {
  model.setLabels(from.list<HostVector<T>>());
  auto sizes = from.list<zel::IndexList<>>();
  std::uint64_t left = model.vectors().rows();
  for (std::uint64_t c = 0; c < sizes.size(); ++c) {
    ByteReader::require(sizes[c] <= left);
    left -= sizes[c];
  }
  ByteReader::require(left == 0);
  model.setClassSizes(std::move(sizes));
  for (std::uint64_t pairs = from.count(4 * sizeof(double)); pairs > 0; --pairs) {
    const zel::Interval pair = from.interval();
    const zel::Interval sigmoid = from.interval();
    model.sigmoids.emplace(LabelPair{pair.lower, pair.upper},
                           Sigmoid{sigmoid.lower, sigmoid.upper});
  }
}

// What predictions rely on.
template <typename T>
void requireShape(const GenericModel<T>& model, ProblemKind kind) {
  const std::uint64_t vectors = model.vectors().rows();
  std::uint64_t labels = 2;
  if (kind != ProblemKind::regression) {
    labels = model.labels().size();
    ByteReader::require(labels >= 2 && (labels == 2 || kind == ProblemKind::classification) &&
                        model.classSizes().size() == labels);
  }
  const std::uint64_t coefficients = model.coefficients().size();
  ByteReader::require(coefficients % (labels - 1) == 0 && coefficients / (labels - 1) == vectors &&
                      model.rho().size() == pairCount(labels) &&
                      (model.indices().empty() || model.indices().size() == vectors) &&
                      model.featureCount >= model.vectors().features().count() &&
                      model.featureCount <= mostFeatures);
}

}  // namespace

template <typename T>
std::string modelBytes(const SvmContext<T>& context, const GenericModel<T>& model) {
  ByteWriter to;
  writeSettings(to, context);
  to.whole(model.seed);
  to.whole(model.featureCount);
  to.number(model.sigma);
  to.flag(model.probability);
  writeScale(to, model.scale);
  if (context.kernelType == SVM_KERNEL_PRECOMPUTED)
    to.list(spanOf(model.vectors().rowIds()));
  else
    writeMatrix(to, model.vectors());
  to.flag(model.givenVectors != nullptr);
  if (model.givenVectors) writeMatrix(to, *model.givenVectors);
  to.list(model.indices());
  to.list(spanOf(model.coefficients()));
  to.list(spanOf(model.rho()));
  if (context.problemKind != ProblemKind::regression) writeClasses(to, model);
  return sealed(to.bytes);
}

template <typename T>
LoadedModel<T> modelFromBytes(std::string_view bytes, const Machine& machine) {
  ByteReader from(unsealed(bytes));
  LoadedModel<T> loaded;
  loaded.context =
      std::make_unique<SvmContext<T>>(readSettings(from), ParameterChecks::training, machine);
  loaded.model = std::make_unique<GenericModel<T>>();
  GenericModel<T>& model = *loaded.model;
  model.seed = from.whole<std::uint32_t>();
  model.featureCount = from.whole<std::uint64_t>();
  model.sigma = from.number();
  model.probability = from.flag();
  readScale(from, model.scale);
  model.setVectors(loaded.context->kernelType == SVM_KERNEL_PRECOMPUTED
                       ? readNumbers<T>(from, model.featureCount)
                       : readMatrix<T>(from));
  if (from.flag()) {
    model.givenVectors = readMatrix<T>(from);
    ByteReader::require(model.givenVectors->rows() == model.vectors().rows());
  }
  if (auto indices = from.list<zel::IndexList<>>(); indices.size() > 0)
    model.setIndices(std::move(indices));
  model.setCoefficients(from.list<HostVector<T>>());
  model.setRho(from.list<HostVector<T>>());
  if (loaded.context->problemKind != ProblemKind::regression) readClasses(from, model);
  ByteReader::require(from.isAtEnd());
  requireShape(model, loaded.context->problemKind);
  return loaded;
}

bool holdsModelBytes(const std::string& path) {
  std::error_code unknown;
  if (!std::filesystem::is_regular_file(path, unknown)) return false;
  char first[modelMagic.size()];
  std::ifstream file(path, std::ios::binary);
  return file.read(first, sizeof first) && std::string_view(first, sizeof first) == modelMagic;
}

std::string wholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes(std::istreambuf_iterator<char>(file), {});
  if (!file) zel::throwAppException("failed to open %s.", path.c_str());
  return bytes;
}

template std::string modelBytes(const SvmContext<double>&, const GenericModel<double>&);
template LoadedModel<double> modelFromBytes(std::string_view, const Machine&);

}  // namespace zelsvm
