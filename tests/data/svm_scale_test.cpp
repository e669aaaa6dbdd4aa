// The scale record: range texts, learning from data, parameter files.
#include "data/svm_scale.h"

#include <gtest/gtest.h>

#include "base/errors.h"
#include "support/host_vectors.h"
#include "support/matrices.h"
#include "support/temp_file.h"

namespace {

using zel::AppException;
using zeltest::failureOf;
using zeltest::pairsOf;
using zeltest::TempFile;
using Pair = std::pair<double, double>;
using Pairs = std::vector<Pair>;
using Scale = zelsvm::SvmScale<double>;

Pair pairOf(const zel::Interval& p) { return {p.lower, p.upper}; }

TEST(ScaleRange, IsTwoNumbersInOrder) {
  for (const auto& [text, range] :
       std::vector<std::pair<std::string, Pair>>{{"", {0, 0}},
                                                 {":1", {0, 0}},
                                                 {"1:", {0, 0}},
                                                 {":", {0, 0}},
                                                 {"0:1", {0, 1}},
                                                 {"-1.5:2e1", {-1.5, 20}},
                                                 {"::-1::1", {-1, 1}},
                                                 {"'0:1'", {0, 1}},
                                                 {"\"'-2:3", {-2, 3}},
                                                 {"'':1", {0, 1}},
                                                 {" 0 : 1 x", {0, 1}},
                                                 {"x:1:0", {0, 1}},
                                                 {std::string(5000, '0') + ":1", {0, 0}}})
    EXPECT_EQ(pairOf(zelsvm::parseScaleRange(text)), range) << text.substr(0, 20);
  for (const char* text : {"1", "'", " ", "0,1"})
    EXPECT_EQ(failureOf<AppException>([&] { zelsvm::parseScaleRange(text); }),
              "The scale parameter is of incorrect format.");
  for (const char* text : {"0:0", "2:1", "a:b", "0:'1'"})
    EXPECT_EQ(failureOf<AppException>([&] { zelsvm::parseScaleRange(text); }),
              "The lower bound of the scale parameter exceeds its upper bound.");
}

// Features 0 … 4, 0, -1 … 3; targets 1.5 … 9.
class SvmScaleTest : public testing::Test {
 protected:
  void restore(const std::string& text) {
    const TempFile file(text);
    scale.restore(file.path());
  }

  std::string saved() const {
    const TempFile file("old\n");
    scale.save(file.path());
    return file.text();
  }

  std::vector<double> values = {0, 0, -1, 4, 0, 3, 1, 0, 2};
  std::unique_ptr<zeltest::Matrix> matrix =
      zelmag::createMatrix<double>(values.data(), nullptr, nullptr, 3, 3);
  zelsvm::HostVector<double> labels = zeltest::hostVector<double>({4, 1.5, 9});
  zelsvm::UserData<double> data{*matrix, labels};
  Scale scale;
  const Pairs bounds = {{0, 4}, {0, 0}, {-1, 3}};
  const std::string featureText = "X-scale: -1 1\n  0: 0 4\n  2: -1 3\n";
  const std::string targetText = "Y-scale: 0 1\n  1.5 9\n";
};

TEST_F(SvmScaleTest, LearnsOnlyWhatItScales) {
  EXPECT_EQ(failureOf<AppException>([&] { return scale.featureBounds().size(); }),
            "The data scale is not yet initialized.");
  scale.setRanges({3, 3}, {-2, -2});
  scale.initialize(data);
  EXPECT_EQ(pairsOf(scale.featureBounds()), Pairs(3));
  EXPECT_EQ(pairOf(scale.yBounds()), Pair());
  EXPECT_EQ(scale.varianceFactor(), 1);
  EXPECT_EQ(scale.scaledTarget(5) + scale.unscaledTarget(7), 12);
  scale.setRanges({-1, 1}, {0, 5});
  scale.initialize(data);
  EXPECT_EQ(pairsOf(scale.featureBounds()), bounds);
  EXPECT_EQ(pairOf(scale.yBounds()), Pair(1.5, 9));
  EXPECT_DOUBLE_EQ(scale.varianceFactor(), 1.5 * 1.5);
}

TEST_F(SvmScaleTest, TargetsGoThereAndBack) {
  scale.setRanges({0, 0}, {-1, 1});
  scale.initialize(data);
  EXPECT_EQ(scale.scaledTarget(1.5), -1);
  EXPECT_EQ(scale.scaledTarget(9), 1);
  for (const double t : {-3.0, 1.5, 4.0, 1e6})
    EXPECT_NEAR(scale.unscaledTarget(scale.scaledTarget(t)), t, 1e-15 * (20 + std::abs(t)));
  scale.assign({0, 0}, {-1, 1}, {4, 4}, {});
  EXPECT_EQ(scale.scaledTarget(17), -1);
  EXPECT_EQ(scale.unscaledTarget(0.3), 4);
  EXPECT_EQ(scale.varianceFactor(), 0);
}

TEST_F(SvmScaleTest, FileHasTheExactLayout) {
  struct Case {
    zel::Interval x, y;
    std::string text;
  };
  for (const Case& c :
       {Case{{-1, 1}, {0, 1}, featureText + targetText}, Case{{-1, 1}, {2, 2}, featureText},
        Case{{0, 0}, {0, 1}, targetText}, Case{{0, 0}, {0, 0}, ""}}) {
    scale.setRanges(c.x, c.y);
    scale.initialize(data);
    EXPECT_EQ(saved(), c.text);
  }
  scale.setRanges({-1, 1}, {0, 1});
  EXPECT_EQ(failureOf<AppException>([&] { scale.save("/dev/full"); }),
            "failed writing to file: /dev/full");
}

TEST_F(SvmScaleTest, RestoresWhatItSaved) {
  restore(featureText + targetText);
  EXPECT_EQ(pairOf(scale.xRange()), Pair(-1, 1));
  EXPECT_EQ(pairOf(scale.yRange()), Pair(0, 1));
  EXPECT_EQ(pairOf(scale.yBounds()), Pair(1.5, 9));
  EXPECT_EQ(pairsOf(scale.featureBounds()), bounds);
  EXPECT_EQ(scale.varianceFactor(), 56.25);
  EXPECT_EQ(saved(), featureText + targetText);
}

TEST_F(SvmScaleTest, RestoreTakesOddLines) {
  scale.setRanges({-7, 7}, {-8, 8});
  restore(
      "1: 5 6\n1: 7 8\n  3:  -1e1   0x10 9\n0:1\n:2: 3\n\n5\n\t1\t2\n 6 \t7 8\nY-scale:  3 4\n"
      "  X-scale: 8 9\nx-scale: 1 2\nX-scale:\t-1\t1\n");
  EXPECT_EQ(pairOf(scale.xRange()), Pair(-7, 7)) << "the file has none: tabs do not separate";
  EXPECT_EQ(pairsOf(scale.featureBounds()), Pairs({{8, 9}, {5, 6}, {0, 0}, {-10, 16}}))
      << "unknown names are feature 0";
  EXPECT_EQ(pairOf(scale.yBounds()), Pair(6, 7));
  EXPECT_EQ(pairOf(scale.yRange()), Pair(3, 4));
}

TEST_F(SvmScaleTest, WithoutBoundsFeaturesStayAsTheyAre) {
  scale.setRanges({-1, 1}, {0, 0});
  restore(targetText);
  EXPECT_FALSE(scale.scalesFeatures());
  EXPECT_TRUE(scale.scalesTargets());
}

TEST_F(SvmScaleTest, RestoreRefusesWhatIsNoRecord) {
  const std::pair<std::string, std::string> cases[] = {
      {"", "has no line X-scale or Y-scale"},
      {"1 1:2\n", "has no line X-scale or Y-scale"},
      {"  0: 0 4\n  1.5 9\n", "has no line X-scale or Y-scale"},
      {"SvmType: smo-C-classification\nX-scale: -1 1\n  0: 0 4\n", "is a model"},
      {"X-scale: -1 1\n", "has no bounds of features"},
      {"Y-scale: 0 1\n", "has no bounds of targets"},
      {"X-scale: nan 1\n  0: 0 4\n", "has a bound that is no finite number"},
      {"X-scale: -1 1\n  0: 0 inf\n", "has a bound that is no finite number"},
      {"X-scale: -1 1\n  0: 0 1e999\n", "has a bound that is no finite number"},
      {"X-scale: -1 1\n  0: 0 x4\n", "has a bound that is no finite number"},
      {"Y-scale: 0 1\n  1.5 -nan\n", "has a bound that is no finite number"},
      {"Y-scale: 0 1\n  1.5 9", "is cut short"},
  };
  for (const auto& [text, fault] : cases) {
    const TempFile file(text);
    EXPECT_EQ(failureOf<AppException>([&] { scale.restore(file.path()); }),
              "The scale parameter file " + file.path() + " " + fault + ".")
        << text;
  }
  scale.setRanges({0, 0}, {0, 1});
  EXPECT_NE(failureOf<AppException>([&] { restore(featureText); }).find("no bounds of targets"),
            std::string::npos);
  EXPECT_EQ(failureOf<AppException>([&] { scale.restore("/nowhere/range"); }),
            "failed to open /nowhere/range.");
}

TEST_F(SvmScaleTest, NamesFeaturesWithoutBounds) {
  using Features = std::vector<std::uint64_t>;
  restore("X-scale: 0 1\n  1: 1 2\n");
  EXPECT_EQ(scale.unknownFeatures(*matrix), Features({0, 2})) << "feature 1 is 0 everywhere";
  std::vector<double> stored = {0, 5, 3, 7};
  std::vector<int> columns = {0, 1, 2, 2};
  std::vector<int> offsets = {0, 2, 3, 4};
  const auto sparse =
      zelmag::createMatrix<double>(stored.data(), columns.data(), offsets.data(), 3, 3);
  EXPECT_EQ(scale.unknownFeatures(*sparse), Features({2}));
  restore(targetText);
  EXPECT_EQ(scale.unknownFeatures(*matrix), Features()) << "features are not scaled";
}

}  // namespace
