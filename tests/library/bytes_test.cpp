// Models as bytes: nothing is lost, and nothing that was changed is taken.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/library_samples.h"
#include "support/programs/tool_runs.h"

namespace {

using zelsvm::Formulation;
using zelsvm::Model;
using zelsvm::Parameters;
using zeltest::dense;
using zeltest::Samples;
using zeltest::sparse;

void expectSamePredictions(const Model& a, const Model& b, const zelsvm::Samples& samples) {
  const bool probability = a.hasProbability() && a.formulation() != Formulation::oneClass;
  const auto before = a.predict(samples, probability);
  const auto after = b.predict(samples, probability);
  EXPECT_EQ(before.values, after.values);
  EXPECT_EQ(before.decisionValues, after.decisionValues);
  EXPECT_EQ(before.probabilities, after.probabilities);
}

void expectSameContent(const Model& a, const Model& b) {
  EXPECT_EQ(a.labels(), b.labels());
  EXPECT_EQ(a.featureCount(), b.featureCount());
  EXPECT_EQ(a.residualScale(), b.residualScale());
  EXPECT_EQ(a.supportCounts(), b.supportCounts());
  EXPECT_EQ(a.supportIndices(), b.supportIndices());
  EXPECT_EQ(a.dualCoefficients(), b.dualCoefficients());
  EXPECT_EQ(a.intercepts(), b.intercepts());
  EXPECT_EQ(a.parameters().gamma.value, b.parameters().gamma.value);
  EXPECT_EQ(a.parameters().classWeights, b.parameters().classWeights);
  EXPECT_EQ(a.parameters().maxIterations, b.parameters().maxIterations);
  EXPECT_EQ(a.parameters().randomSeed, b.parameters().randomSeed);
  EXPECT_EQ(a.parameters().targetScale.upper, b.parameters().targetScale.upper);
  expectSamePredictions(a, b, a.supportVectors());
  expectSamePredictions(a, b, b.supportVectors());
}

void expectKept(const Samples& samples, const zelsvm::Samples& rows, const Parameters& parameters) {
  SCOPED_TRACE(static_cast<int>(parameters.formulation));
  const Model model = zelsvm::train(rows, samples.labels, parameters);
  const std::string bytes = model.toBytes();
  const Model again = Model::fromBytes(bytes);
  expectSamePredictions(model, again, rows);
  expectSameContent(model, again);
  EXPECT_TRUE(again.solves().empty());
  EXPECT_EQ(again.toBytes(), bytes);
}

TEST(LibraryBytes, KeepEveryBitOfAModel) {
  for (const zelsvm::Interval scale : {zelsvm::Interval{}, {-1, 1}})
    for (int type = 0; type <= 4; ++type) {
      const auto formulation = static_cast<Formulation>(type);
      const bool isRegression = formulation >= Formulation::epsilonRegression;
      const Samples samples = isRegression ? zeltest::targetSamples(70, 3, 2)
                                           : zeltest::classSamples(90, 4, {2, -1, 5}, 1);
      const Parameters parameters{.formulation = formulation,
                                  .classWeights = {{2, 1.5}},
                                  .maxIterations = 5000,
                                  .probability = formulation != Formulation::oneClass,
                                  .randomSeed = 7,
                                  .featureScale = scale,
                                  .targetScale = {0, 2}};
      expectKept(samples, dense(samples), parameters);
      expectKept(samples, sparse(samples), parameters);
    }
}

TEST(LibraryBytes, KeepVectorsOfZerosAndFeaturesOfLargeNumbers) {
  const Samples zeros{1, {0, 0, 1, 1, 0, 2}, {1, 2, 1, 2, 1, 2}};
  expectKept(zeros, sparse(zeros), {});
  const std::vector<double> values{1, 2, 3};
  const std::vector<int> columns{0, 2000000000, 5};
  const std::vector<int> offsets{0, 2, 3, 3};
  const Samples labels{1, {}, {1, 2, 3}};
  const auto wide = zelsvm::Samples::csr(values, columns, offsets, 2147483647);
  for (const zelsvm::Interval scale : {zelsvm::Interval{}, {0, 3}})
    expectKept(labels, wide, {.gamma = 0.5, .featureScale = scale});
  const Samples one{2, {1, 2, 3, 4}, {7, 7}};
  expectKept(one, dense(one), {});
}

TEST(LibraryBytes, FilesOfThemServeTheTools) {
  const zeltest::Workspace workspace;
  const Samples samples = zeltest::classSamples(60, 3, {1, 2, 3}, 4);
  workspace.write("data", fileText(samples));
  const Model model =
      zelsvm::train(sparse(samples), samples.labels, {.probability = true, .randomSeed = 3});
  const std::string path = (workspace.folder() / "model").string();
  model.saveExact(path);
  expectSameContent(model, Model::load(path));
  for (const std::string options : {"-q -b 1 ", "-q -X -b 1 "}) {
    zeltest::succeed(workspace, zeltest::words("zelsvm-predict " + options + "data model out"));
    const auto found = model.predict(sparse(samples), true);
    std::vector<double> expected{0, 1, 2, 3};
    for (std::size_t i = 0; i < found.values.size(); ++i) {
      expected.push_back(found.values[i]);
      for (std::size_t k = 0; k < 3; ++k) expected.push_back(found.probabilities[3 * i + k]);
    }
    zeltest::expectNear(zeltest::numbersIn(workspace.read("out")), expected, 1e-5);
  }
}

TEST(LibraryBytes, OfAPrecomputedKernelAreOfNoUseToTheTools) {
  const zeltest::Workspace workspace;
  const std::vector<double> values{2, 1, 1, 2};
  const zelsvm::Table<double> kernel(values.data(), 2, 2);
  zelsvm::train(zelsvm::Samples::kernel(kernel), std::vector<double>{1, 2},
                {.kernel = zelsvm::Kernel::precomputed})
      .saveExact((workspace.folder() / "model").string());
  workspace.write("data", "1 1:1 2:1\n");
  zeltest::refuse(workspace, zeltest::words("zelsvm-predict -q data model out"),
                  "This model takes kernel values, not features.");
}

// Why bytes are not taken; empty where they are.
std::string refusal(const std::string& bytes) {
  try {
    static_cast<void>(Model::fromBytes(bytes));
  } catch (const zelsvm::AppException& error) {
    return error.what();
  } catch (const zelsvm::RuntimeException& error) {
    return error.what();
  }
  return "";
}

TEST(LibraryBytes, AreRefusedCutOrChanged) {
  const Samples samples{1, {0.5, 1, 2}, {1, 2, 2}};
  const std::string bytes = zelsvm::train(dense(samples), samples.labels).toBytes();
  for (std::size_t length = 0; length < bytes.size(); ++length)
    EXPECT_NE(refusal(bytes.substr(0, length)), "") << length;
  EXPECT_NE(refusal(bytes + '\0'), "");
  for (std::size_t place = 0; place < bytes.size(); ++place)
    for (const int change : {1, 128, 255}) {
      std::string changed = bytes;
      changed[place] = static_cast<char>(changed[place] ^ change);
      EXPECT_NE(refusal(changed), "") << place;
    }
  std::string later = bytes;
  later[8] = 2;
  EXPECT_EQ(refusal(later), "The bytes of the model are of a version that is not known here.");
  EXPECT_EQ(refusal("SvmType: smo-one-class\n"), "Invalid model file format.");
}

}  // namespace
