#include "model/model_file.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

#include "base/errors.h"
#include "files/read_data.h"
#include "files/user_file_writer.h"
#include "model/finite_model.h"
#include "model/model_bytes.h"
#include "rules/kernel_functions.h"

namespace zelsvm {
namespace {

template <typename Vector>
auto toStdVector(const Vector& v) {
  return std::vector(v.data(), v.data() + v.size());
}

template <typename T>
HostVector<T> toHostVector(const std::vector<double>& v) {
  HostVector<T> result(v.size());
  std::copy(v.begin(), v.end(), result.data());
  return result;
}

template <typename T>
void describeClasses(ModelHeader& header, const GenericModel<T>& model) {
  header.labels = toStdVector(model.labels());
  header.classCount = header.labels.size();
  for (std::uint64_t c = 0; c < header.classCount; ++c)
    header.classSizes.push_back(static_cast<int>(model.classSizes()[c]));
  if (!model.probability) return;
  forEachLabelPair(model.labels(), [&](std::uint64_t, const LabelPair& pair) {
    const auto found = model.sigmoids.find(pair);
    const Sigmoid sigmoid = found == model.sigmoids.end() ? Sigmoid{0, 0} : found->second;
    header.probabilityA.push_back(sigmoid.A);
    header.probabilityB.push_back(sigmoid.B);
  });
}

template <typename T>
ModelHeader describe(const SvmContext<T>& context, const GenericModel<T>& model) {
  ModelHeader header;
  header.algorithmName = context.algorithmName;
  header.kernelName = context.kernelName;
  header.degree = context.degree;
  header.gamma = context.gamma;
  header.coef0 = context.coef0;
  header.sigma = model.sigma;
  header.totalVectors = model.vectors().rows();
  header.rho = toStdVector(model.rho());
  header.xRange = model.scale.xRange();
  header.yRange = model.scale.yRange();
  header.yBounds = model.scale.yBounds();
  if (model.scale.scalesFeatures()) header.featureBounds = model.scale.boundsByFeature();
  if (context.problemKind == ProblemKind::classification) describeClasses(header, model);
  return header;
}

SvmParameters parametersOf(const ModelHeader& header, bool dense) {
  SvmParameters parameters;
  parameters.svmType = static_cast<int>(svmTypeByName(header.algorithmName));
  parameters.kernelType = static_cast<int>(kernelTypeByName(header.kernelName));
  parameters.degree = header.degree;
  parameters.gamma = header.gamma;
  parameters.coef0 = header.coef0;
  parameters.shrinking = false;
  parameters.sparse = !dense;
  return parameters;
}

// Lists read before "NrClass:" may be shorter than the classes need.
void requireCompleteLists(const ModelHeader& header, ProblemKind kind) {
  const std::uint64_t k = header.classCount;
  const auto fits = [](const auto& list, std::uint64_t count) {
    return list.empty() || list.size() == count;
  };
  bool complete = k >= 2 && header.rho.size() == pairCount(k);
  if (kind == ProblemKind::classification)
    complete = complete && header.labels.size() == k && header.classSizes.size() == k &&
               fits(header.probabilityA, pairCount(k)) && fits(header.probabilityB, pairCount(k));
  else
    complete = complete && k == 2;
  if (!complete) throw zel::RuntimeException("Error in loading SVM numeric values");
}

// Labels, class sizes and probability parameters, as the problem kind has them.
template <typename T>
void fillClasses(GenericModel<T>& model, const ModelHeader& header, ProblemKind kind) {
  if (kind == ProblemKind::regression) {
    model.probability = header.sigma != 0;
    return;
  }
  zel::IndexList<> sizes(header.classCount);
  if (kind == ProblemKind::oneClass) {
    // Every support vector lies on the side of label 1.
    model.setLabels(toHostVector<T>({1, -1}));
    sizes[0] = model.vectors().rows();
    sizes[1] = 0;
  } else {
    model.setLabels(toHostVector<T>(header.labels));
    for (std::uint64_t c = 0; c < header.classCount; ++c)
      sizes[c] = static_cast<unsigned long long>(header.classSizes[c]);
  }
  model.setClassSizes(std::move(sizes));
  if (header.probabilityA.empty() || header.probabilityB.empty()) return;
  forEachLabelPair(model.labels(), [&](std::uint64_t t, const LabelPair& pair) {
    model.sigmoids.emplace(pair, Sigmoid{header.probabilityA[t], header.probabilityB[t]});
  });
  model.probability = true;
}

}  // namespace

template <typename T>
void writeModel(const std::string& path, std::uint64_t indexBase, const SvmContext<T>& context,
                const GenericModel<T>& model) {
  if (context.kernelType == SVM_KERNEL_PRECOMPUTED)
    throw zel::AppException("A model of a precomputed kernel cannot be written as text.");
  const bool takesGamma =
      withKernel(context.kernelType, []<typename Function>() { return Function::takesGamma; });
  if (takesGamma && context.gamma == 0 && context.zeroGamma)
    throw zel::AppException("A model file has no room for a gamma of 0.");
  const ModelHeader header = describe(context, model);
  requireFinite(header, model);
  UserFileWriter<T> writer(path, indexBase);
  writer.writeModelHeader(header, model.featureCount);
  writer.writeRows(model.vectors(), model.coefficients().data(), header.classCount);
  writer.close();
}

template <typename T>
LoadedModel<T> readModel(const std::string& path, std::uint64_t indexBase, bool dense,
                         const Machine& machine) {
  if (holdsModelBytes(path)) return modelFromBytes<T>(wholeFile(path), machine);
  LoadedModel<T> loaded;
  loaded.reader = createReader<T>(path, indexBase, dense);
  UserFileReader<T>& reader = *loaded.reader;
  reader.read();
  const ModelHeader& header = reader.header();
  if (header.algorithmName.empty()) throw zel::AppException("Invalid model file format.");
  loaded.context =
      std::make_unique<SvmContext<T>>(parametersOf(header, dense), ParameterChecks::model, machine);
  loaded.model = std::make_unique<GenericModel<T>>();
  GenericModel<T>& model = *loaded.model;
  const ProblemKind kind = loaded.context->problemKind;
  model.setRho(toHostVector<T>(reader.rho()));
  requireCompleteLists(header, kind);
  auto vectors = reader.matrix();
  model.scale.assign(header.xRange, header.yRange, header.yBounds, header.featureBounds);
  if (model.scale.scalesFeatures())
    if (auto moved =
            zelmag::movedTo(model.scale.featureNumbers(), *vectors, zelmag::Unlisted::leftOut))
      vectors = std::move(moved);
  model.setVectors(std::move(vectors));
  model.setCoefficients(std::move(reader.leading()));
  model.sigma = header.sigma;
  model.featureCount = std::max(reader.cols(), model.scale.featureCount());
  requireFinite(header, model);
  fillClasses(model, header, kind);
  return loaded;
}

template void writeModel(const std::string&, std::uint64_t, const SvmContext<double>&,
                         const GenericModel<double>&);
template struct LoadedModel<double>;
template LoadedModel<double> readModel(const std::string&, std::uint64_t, bool, const Machine&);

}  // namespace zelsvm
