// The kinds of data sets: labels, sides, label pairs, whose matrix they look at.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/errors.h"
#include "data/filtered_data.h"
#include "data/multiclass_data.h"
#include "data/scaled_data.h"
#include "support/host_vectors.h"
#include "support/matrices.h"
#include "support/temp_file.h"

namespace {

using zel::AppException;
using zelsvm::FilteredData;
using zelsvm::HostVector;
using zelsvm::LabelPair;
using zelsvm::SvmData;
using zelsvm::UserData;
using zeltest::failureOf;
using zeltest::hostVector;
using zeltest::indexList;
using zeltest::Table;
using zeltest::tableOf;
using Rows = std::vector<unsigned long long>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

// Seven samples of two features: (i, 10 i).
class DataSets : public testing::Test {
 protected:
  void setLabels(const std::vector<double>& values) {
    labels = hostVector(values);
    data = std::make_unique<UserData<double>>(*matrix, labels);
  }
  static std::vector<int> signs(const SvmData<double>& data, std::uint64_t count) {
    std::vector<int> result;
    for (std::uint64_t i = 0; i < count; ++i) result.push_back(data.sign(i));
    return result;
  }
  static std::vector<double> labelsOf(const SvmData<double>& data, std::uint64_t count) {
    std::vector<double> result;
    for (std::uint64_t i = 0; i < count; ++i) result.push_back(data.label(i));
    return result;
  }

  std::vector<double> values = {0, 0, 1, 10, 2, 20, 3, 30, 4, 40, 5, 50, 6, 60};
  std::unique_ptr<zeltest::Matrix> matrix =
      zelmag::createMatrix<double>(values.data(), nullptr, nullptr, 2, 7);
  HostVector<double> labels;
  std::unique_ptr<UserData<double>> data;
};

TEST_F(DataSets, SideFollowsTheLabelPair) {
  setLabels({1, -1, 2, nan, 1, infinity, 0});
  EXPECT_FALSE(data->hasLabelPair());
  EXPECT_EQ(failureOf<AppException>([&] { return data->sign(0); }),
            "The label pair is not yet defined.");
  data->defineLabelPair({1, -1});
  EXPECT_TRUE(data->hasLabelPair());
  EXPECT_EQ(data->labelPair(), (LabelPair{1, -1}));
  EXPECT_EQ(signs(*data, 7), (std::vector<int>{1, -1, -1, -1, 1, -1, -1}));
  EXPECT_EQ(failureOf<AppException>([&] {
              data->defineLabelPair({1, 2});
            }),
            "The label pair has already been defined.");
  EXPECT_EQ(data->labelPair(), (LabelPair{1, -1}));
  setLabels({1, -1, 2, nan, 1, infinity, 0});
  data->defineLabelPair({nan, 1});
  EXPECT_EQ(signs(*data, 7), (std::vector<int>(7, -1)));
}

TEST_F(DataSets, FilteredDataAsksItsBase) {
  setLabels({1, 2, 3, 1, 2, 3, 1});
  const auto rows = indexList({4, 1, 6});
  FilteredData<double> fold(*data, rows);
  EXPECT_EQ(labelsOf(fold, 3), (std::vector<double>{2, 2, 1}));
  EXPECT_EQ(tableOf(fold.matrix()), (Table{{4, 40}, {1, 10}, {6, 60}}));
  EXPECT_FALSE(fold.hasLabelPair());
  const std::string missing = "The label pair is not yet defined.";
  EXPECT_EQ(failureOf<AppException>([&] { return fold.sign(0); }), missing);
  EXPECT_EQ(failureOf<AppException>([&] { return fold.labelPair().first; }), missing);
  data->defineLabelPair({1, 2});
  EXPECT_TRUE(fold.hasLabelPair());
  EXPECT_EQ(fold.labelPair(), (LabelPair{1, 2}));
  EXPECT_EQ(signs(fold, 3), (std::vector<int>{-1, -1, 1}));
  fold.defineLabelPair({2, 1});
  EXPECT_EQ(fold.labelPair(), (LabelPair{2, 1}));
  EXPECT_EQ(signs(fold, 3), (std::vector<int>{1, 1, -1}));
  EXPECT_EQ(data->labelPair(), (LabelPair{1, 2}));
  const auto inner = indexList({2, 0});
  FilteredData<double> part(fold, inner);
  EXPECT_EQ(labelsOf(part, 2), (std::vector<double>{1, 2}));
  EXPECT_EQ(signs(part, 2), (std::vector<int>{-1, 1}));
  EXPECT_EQ(zeltest::valuesOf(part.matrix().rowIds()), (Rows{6, 4}));
}

TEST_F(DataSets, PairDataPutsTheFirstLabelFirst) {
  setLabels({7, 3, 3, 7, 3, 3, 3});
  auto first = indexList({1, 2, 4, 5, 6});
  auto second = indexList({0, 3});
  zelsvm::MulticlassData<double> pair(*data, {3, 7}, 0, first, second);
  EXPECT_EQ(pair.sampleCount(), 7u);
  EXPECT_EQ(zeltest::valuesOf(pair.matrix().rowIds()), (Rows{1, 2, 4, 5, 6, 0, 3}));
  EXPECT_EQ(zeltest::rowOf(pair.matrix(), 6), (std::vector<double>{3, 30}));
  EXPECT_EQ(labelsOf(pair, 7), (std::vector<double>{1, 1, 1, 1, 1, -1, -1}));
  EXPECT_EQ(signs(pair, 7), (std::vector<int>{1, 1, 1, 1, 1, -1, -1}));
  EXPECT_EQ(pair.labelPair(), (LabelPair{3, 7}));
  EXPECT_FALSE(data->hasLabelPair());
  EXPECT_EQ(pair.secondRows[1], 3u);
  const auto rows = indexList({6, 0});
  const FilteredData<double> fold(pair, rows);
  EXPECT_EQ(signs(fold, 2), (std::vector<int>{-1, 1})) << "by position, not by label";
}

TEST_F(DataSets, ScaledDataCopiesOnlyWhatIsScaled) {
  setLabels({2, 4, 6, 3, 2, 2, 2});
  zelsvm::SvmScale<double> scale;
  zelsvm::ScaledData<double> same(*data, scale);
  EXPECT_EQ(&same.matrix(), matrix.get());
  EXPECT_EQ(labelsOf(same, 4), (std::vector<double>{2, 4, 6, 3}));
  EXPECT_NE(same.labels().data(), data->labels().data());
  scale.setRanges({0, 1}, {-1, 1});
  scale.initialize(*data);
  zelsvm::ScaledData<double> scaled(*data, scale);
  EXPECT_EQ(labelsOf(scaled, 4), (std::vector<double>{-1, 0, 1, -0.5}));
  EXPECT_EQ(zeltest::rowOf(scaled.matrix(), 3), (std::vector<double>{0.5, 0.5}));
  EXPECT_EQ(zeltest::rowOf(*matrix, 3), (std::vector<double>{3, 30}));
  EXPECT_EQ(data->label(0), 2);
}

TEST_F(DataSets, ClassLabelsMustBeWholeNumbers) {
  setLabels({-0.0, 9e18, -3, 2, -9e18, 1, 0});
  zelsvm::requireIntegerLabels(data->labels());
  EXPECT_EQ(zeltest::valuesOf(labels), (std::vector<double>{0, 9e18, -3, 2, -9e18, 1, 0}));
  EXPECT_FALSE(std::signbit(labels[0])) << "checked labels arrive in the driver's own vector";
  for (const double bad : {1.5, -2.9, nan, 1e-300, -0.1, 1e300, 0x1p63, -infinity}) {
    setLabels({1, 2, 3, 4, 5, 6, bad});
    EXPECT_EQ(failureOf<AppException>([&] { zelsvm::requireIntegerLabels(data->labels()); }),
              "Only integer values are supported for classification.")
        << bad;
  }
  HostVector<double> none;
  EXPECT_NO_THROW(zelsvm::requireIntegerLabels(none));
}

}  // namespace
