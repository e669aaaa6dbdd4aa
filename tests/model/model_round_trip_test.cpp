// Models written and read again, and model files that cannot be models.
#include <gtest/gtest.h>

#include <algorithm>

#include "base/errors.h"
#include "model/model_file.h"
#include "support/models.h"
#include "support/quiet.h"
#include "support/temp_file.h"
#include "support/tested_machine.h"

namespace {

using zeltest::failureOf;
using zeltest::MadeModel;
using zeltest::sixteenths;
using zeltest::TempFile;
using zeltest::unlabelled;
using zeltest::valuesOf;
using Values = std::vector<double>;
using Sizes = std::vector<unsigned long long>;
using Model = zelsvm::GenericModel<double>;

class ModelRoundTrip : public testing::Test {
 protected:
  const zeltest::Quiet quiet;
};

struct Kind {
  zelsvm::SVM_TYPE type;
  Values labels;
  Sizes sizes;
};

const std::vector<Kind> kinds = {{zelsvm::SVM_TYPE_C_CLASSIFICATION, {-1, 1}, {5, 4}},
                                 {zelsvm::SVM_TYPE_NU_CLASSIFICATION, {0, 2, 5.5}, {2, 4, 3}},
                                 {zelsvm::SVM_TYPE_ONE_CLASS, {1, -1}, {9, 0}},
                                 {zelsvm::SVM_TYPE_NU_REGRESSION, {}, {}}};

// Nine support vectors with 8 features, of which the last two are 0 in all.
zeltest::Samples nineVectors() {
  zeltest::Samples vectors = unlabelled(8, sixteenths(72, 5));
  for (std::size_t i = 0; i < 72; ++i)
    if (i % 8 >= 6) vectors.values[i] = 0;
  for (std::size_t i = 0; i < 9; ++i) vectors.values[8 * i + i % 6] = 1;
  return vectors;
}

// Sigmoids of all pairs but (first, last); a Laplace scale where there are no labels.
void addProbabilities(Model& model) {
  model.probability = true;
  if (!model.hasLabels()) model.sigma = 0.375;
  for (std::uint64_t i = 0; model.hasLabels() && i + 1 < model.labels().size(); ++i)
    model.sigmoids[{model.labels()[i], model.labels()[i + 1]}] = {-2 - 0.5 * double(i), 0.25};
}

void addScale(Model& model) {
  zelmag::BoundsByFeature bounds;
  for (unsigned j = 0; j < 8; ++j) bounds[j] = {-(j / 4.0), j / 2.0};
  model.scale.assign({-1, 1}, {0, 2}, {1.5, 9}, bounds);
}

void expectSameValues(const Values& actual, const Values& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i)
    ASSERT_NEAR(actual[i], expected[i], 1e-12 * (1 + std::abs(expected[i]))) << i;
}

std::string writtenText(std::uint64_t indexBase, const zelsvm::SvmContext<double>& context,
                        const Model& model) {
  const TempFile file;
  zelsvm::writeModel(file.path(), indexBase, context, model);
  return file.text();
}

TEST_F(ModelRoundTrip, KeepsEveryKindOfModel) {
  const zeltest::Samples test = unlabelled(8, sixteenths(8 * 30, 9));
  for (const Kind& kind : kinds)
    for (const bool sparse : {false, true})
      for (const bool extras : {false, true}) {
        const std::uint64_t indexBase = extras ? 0 : 1;
        zelsvm::SvmParameters parameters;
        parameters.svmType = static_cast<int>(kind.type);
        parameters.kernelType = extras ? zelsvm::SVM_KERNEL_POLYNOMIAL : zelsvm::SVM_KERNEL_RADIAL;
        parameters.degree = 2;
        parameters.coef0 = 0.5;
        parameters.sparse = sparse;
        MadeModel made(parameters, nineVectors(), kind.labels, kind.sizes, 3);
        if (extras) addScale(made.model);
        if (extras && kind.type != zelsvm::SVM_TYPE_ONE_CLASS) addProbabilities(made.model);
        const std::string text = writtenText(indexBase, made.context, made.model);
        const TempFile file(text);
        const auto loaded =
            zelsvm::readModel<double>(file.path(), indexBase, !sparse, zeltest::testedMachine());
        const Model& model = *loaded.model;
        EXPECT_EQ(writtenText(indexBase, *loaded.context, model), text);
        EXPECT_EQ(loaded.context->gamma, 0.125) << "0 is resolved on writing";
        EXPECT_FALSE(loaded.context->shrinking);
        EXPECT_EQ(model.vectors().isSparse(), sparse);
        EXPECT_EQ(model.featureCount, extras ? 8u : 6u);
        EXPECT_EQ(model.probability, made.model.probability);
        EXPECT_EQ(model.sigma, made.model.sigma);
        EXPECT_EQ(model.scale.varianceFactor(), extras ? 3.75 * 3.75 : 1);
        EXPECT_EQ(model.scale.featureCount(), extras ? 8u : 0u);
        for (const auto& [pair, sigmoid] : made.model.sigmoids)
          EXPECT_EQ(model.sigmoids.at(pair).A, sigmoid.A);
        ASSERT_EQ(model.hasLabels(), made.model.hasLabels());
        expectSameValues(zeltest::decisionValues(*loaded.context, model, test),
                         zeltest::decisionValues(made.context, made.model, test));
        if (!model.hasLabels()) continue;
        EXPECT_EQ(valuesOf(model.labels()), kind.labels);
        EXPECT_EQ(valuesOf(model.classStarts()), valuesOf(made.model.classStarts()));
      }
}

// Under the linear kernel they add nothing, so predictions must stay.
TEST_F(ModelRoundTrip, AllZeroVectorsVanishWithTheirCoefficients) {
  zeltest::Samples vectors = nineVectors();
  for (const std::size_t row : {1, 4, 8}) std::fill_n(vectors.values.begin() + row * 8, 8, 0.0);
  zelsvm::SvmParameters parameters;
  parameters.kernelType = zelsvm::SVM_KERNEL_LINEAR;
  const zeltest::Samples test = unlabelled(8, sixteenths(80, 9));
  for (const bool sparse : {false, true}) {
    parameters.sparse = sparse;
    MadeModel made(parameters, vectors, {1, 2, 3}, {2, 4, 3}, 3);
    const TempFile file(writtenText(1, made.context, made.model));
    const auto loaded =
        zelsvm::readModel<double>(file.path(), 1, !sparse, zeltest::testedMachine());
    EXPECT_EQ(valuesOf(loaded.model->classSizes()), (Sizes{1, 3, 2}));
    EXPECT_EQ(loaded.model->vectors().rows(), 6u);
    expectSameValues(zeltest::decisionValues(*loaded.context, *loaded.model, test),
                     zeltest::decisionValues(made.context, made.model, test));
  }
}

const std::string type = "SvmType: smo-C-classification\n";
const std::string counts = "NrClass: 2\nTotalSV: 2\n";
const std::string classes = "Labels: 1 2\nNrSV: 1 1\n";
const std::string vectors = "SV:\n1 1:1 \n-1 2:2 \n";

TEST_F(ModelRoundTrip, RefusesWhatIsNoModel) {
  const std::string linear = type + "KernelType: linear\n";
  const std::string incomplete = "Error in loading SVM numeric values";
  const std::string noModel = "Invalid model file format.";
  const std::string rho = "Rho: 0.5\n";
  const std::string three = "NrClass: 3\nTotalSV: 2\n";
  const std::string threes = "Labels: 1 2 3\nNrSV: 1 1 0\nSV:\n1 1 1:1\n1 1 2:1\n";
  const std::string others = "NrClass: 2\nRho: 1\n";
  struct Case {
    std::string text, failure;
  };
  for (const Case& c : {
           Case{linear + counts + rho + classes + vectors, ""},
           Case{"1 1:1 2:3\n-1 1:2\n", noModel},
           Case{"SvmType:\n" + counts + rho + classes + vectors, noModel},
           Case{"SvmType: c-svc\n" + counts + rho + vectors, "Unsupported SVM type"},
           Case{type + "KernelType: rbf\n" + counts + rho + vectors, "Unsupported kernel type"},
           Case{type + counts + rho + classes + vectors, "Unsupported kernel type"},
           Case{linear + "Gamma: -1\n" + counts + rho + classes + vectors,
                "Invalid gamma or degree parameters"},
           Case{linear + "Degree: -2\n" + counts + rho + classes + vectors,
                "Invalid gamma or degree parameters"},
           Case{linear + counts + classes + vectors, "The SVM rho values are absent."},
           Case{linear + "NrClass: 1\nSV:\n1:1\n", "The SVM rho values are absent."},
           Case{linear + rho + three + threes, incomplete},
           Case{linear + three + "Rho: 1 2 3\nProbability_A: 1 2 3\n" + threes, ""},
           Case{linear + "Probability_A: 1\n" + three + "Rho: 1 2 3\n" + threes, incomplete},
           Case{linear + "Labels: 1 2\n" + three +
                    "Rho: 1 2 3\nNrSV: 1 1 0\nSV:\n1 1 1:1\n1 1 2:2\n",
                incomplete},
           Case{linear + counts + rho + "NrSV: 1 1\n" + vectors, incomplete},
           Case{linear + counts + rho + "Labels: 1 2\n" + vectors, incomplete},
           Case{"SvmType: smo-one-class\nKernelType: linear\n" + three + "Rho: 1 2 3\n" + threes,
                incomplete},
           Case{
               "SvmType: smo-nu-regression\nKernelType: linear\n" + three + "Rho: 1 2 3\n" + threes,
               incomplete},
           Case{"SvmType: smo-one-class\nKernelType: linear\n" + others + vectors, ""},
           Case{linear + counts + rho + classes, "No proper data is found in input file"},
       })
    for (const bool dense : {false, true}) {
      const TempFile file(c.text);
      EXPECT_EQ(failureOf([&] {
                  zelsvm::readModel<double>(file.path(), 1, dense, zeltest::testedMachine());
                }),
                c.failure)
          << c.text;
    }
}

TEST_F(ModelRoundTrip, RefusesNumbersThatAreNotFinite) {
  const std::pair<const char*, const char*> places[] = {{"Gamma: ?", "kernel parameters"},
                                                        {"X-scale: ? 1", "scale bounds"},
                                                        {"X-scale: 0 1\n 0: 0 ?", "scale bounds"},
                                                        {"Rho: ?", "rho values"},
                                                        {"Labels: 1 ?", "labels"},
                                                        {"SV:\n? 1:1", "coefficients"},
                                                        {"SV:\n1 1:?", "vectors"}};
  for (const char* value : {"nan", "inf", "1e999"})
    for (const auto& [place, part] : places) {
      std::string line = place;
      line.replace(line.find('?'), 1, value);
      const std::string text = type + "KernelType: radial\n" + counts;
      const bool vector = line.starts_with("SV:");
      const TempFile file(text + (vector ? "" : line + "\n") +
                          (line.starts_with("Rho") ? "" : "Rho: 0.5\n") +
                          (line.starts_with("Labels") ? "NrSV: 1 1\n" : classes) +
                          (vector ? line + "\n-1 2:2\n" : vectors));
      EXPECT_EQ(failureOf([&] {
                  zelsvm::readModel<double>(file.path(), 1, false, zeltest::testedMachine());
                }),
                std::string("The SVM ") + part + " are not finite numbers.")
          << line;
    }
}

TEST_F(ModelRoundTrip, NoCutGoesUnnoticed) {
  MadeModel made({}, nineVectors(), kinds[1].labels, kinds[1].sizes, 3);
  addScale(made.model);
  addProbabilities(made.model);
  const std::string text = writtenText(1, made.context, made.model);
  for (std::size_t length = 0; length < text.size(); ++length) {
    const TempFile file(text.substr(0, length));
    EXPECT_NE(failureOf([&] {
                zelsvm::readModel<double>(file.path(), 1, length % 2 == 0,
                                          zeltest::testedMachine());
              }),
              "")
        << length;
  }
}

}  // namespace
