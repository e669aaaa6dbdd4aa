// Which features get columns, and where columns go.
#include "data/feature_numbers.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using zelmag::columnMove;
using zelmag::FeatureNumbers;
using zelmag::Unlisted;
using Numbers = std::vector<std::uint64_t>;

Numbers numbersOf(const FeatureNumbers& features) {
  Numbers numbers;
  for (std::uint64_t column = 0; column < features.columns(); ++column)
    numbers.push_back(features[column]);
  return numbers;
}

// Entries that meet some columns more than once and in no order, the last one not at all.
std::vector<int> entriesIn(std::uint64_t used, std::uint64_t count) {
  std::vector<int> columns;
  for (std::uint64_t k = 0; k < 3 * used; ++k)
    columns.push_back(static_cast<int>(k * 7919 % used * ((count - 1) / used)));
  return columns;
}

TEST(FeaturesInUse, AreListedWhereTheyAreFewAndTheLastAmongThem) {
  for (const std::uint64_t used : {1u, 2u, 9u, 30u, 500u})
    for (const std::uint64_t count :
         {2 * used + 1002, 2 * used + 1003, 190 * used, 2000 * used, std::uint64_t{2147483647}}) {
      const std::vector<int> columns = entriesIn(used, count);
      std::set<std::uint64_t> distinct(columns.begin(), columns.end());
      distinct.insert(count - 1);
      ASSERT_EQ(distinct.size(), used + 1);
      const FeatureNumbers found = zelmag::featuresInUse(columns.data(), columns.size(), count);
      EXPECT_EQ(found.count(), count);
      ASSERT_EQ(found.isListed(), count > 2 * (used + 1) + 1000) << used << " of " << count;
      if (!found.isListed()) continue;
      EXPECT_EQ(numbersOf(found), Numbers(distinct.begin(), distinct.end()));
      for (std::uint64_t column = 0; column < found.columns(); ++column)
        EXPECT_EQ(found.find(found[column]), column);
      EXPECT_EQ(found.find(found[0] + 1), found[0] + 1 == count - 1 ? 1u : found.columns());
    }
  EXPECT_FALSE(zelmag::featuresInUse(nullptr, 0, 1002).isListed());
  EXPECT_EQ(numbersOf(zelmag::featuresInUse(nullptr, 0, 5000)), Numbers{4999});
}

TEST(ColumnMove, KeepsLeavesOutAndAppends) {
  const FeatureNumbers listed(5000, {3, 10, 4999});
  const FeatureNumbers other(9000, {2, 10, 3000, 4999, 5000, 8999});
  const FeatureNumbers all(4);
  struct Case {
    FeatureNumbers from, to;
    Unlisted unlisted;
    std::vector<int> columns;
    Numbers numbers;
  };
  for (const auto& [from, to, unlisted, columns, numbers] :
       {Case{other, listed, Unlisted::leftOut, {-1, 1, -1, 2, 3, 4}, {3, 10, 4999, 5000, 8999}},
        Case{other,
             listed,
             Unlisted::appended,
             {3, 1, 4, 2, 5, 6},
             {3, 10, 4999, 2, 3000, 5000, 8999}},
        Case{all, listed, Unlisted::leftOut, {-1, -1, -1, 0}, {3, 10, 4999}},
        Case{listed, all, Unlisted::leftOut, {3, 4, 5}, {0, 1, 2, 3, 10, 4999}},
        Case{listed, 6000, Unlisted::leftOut, {3, 10, 4999}, numbersOf(FeatureNumbers(6000))}}) {
    const zelmag::ColumnMove move = columnMove(from, to, unlisted);
    EXPECT_EQ(move.columns, columns);
    EXPECT_EQ(numbersOf(move.features), numbers);
    EXPECT_EQ(move.features.count(), std::max(from.count(), to.count()));
  }
  EXPECT_FALSE(columnMove(listed, 6000, Unlisted::leftOut).features.isListed());
}

}  // namespace
