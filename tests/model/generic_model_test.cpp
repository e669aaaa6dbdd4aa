// The model in memory: what it refuses, and its coefficients by label pair.
#include "model/generic_model.h"

#include <gtest/gtest.h>

#include "base/errors.h"
#include "support/models.h"
#include "support/temp_file.h"

namespace {

using zel::AppException;
using zeltest::failureOf;
using zeltest::hostVector;
using zeltest::indexList;
using zeltest::valuesOf;
using Model = zelsvm::GenericModel<double>;

TEST(GenericModel, PairsTakeTheirColumnsOfTheCoefficients) {
  Model model;
  model.setLabels(hostVector<double>({10, 20, 30, 40}));
  model.setClassSizes(indexList({2, 1, 0, 2}));
  EXPECT_EQ(valuesOf(model.classStarts()), (std::vector<unsigned long long>{0, 2, 3, 3, 5}));
  model.setCoefficients(hostVector<double>({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
  zelsvm::HostVector<double> target(5);
  std::uint64_t t = 0;
  for (const auto& [a, b, expected] :
       std::vector<std::tuple<int, int, std::vector<double>>>{{0, 1, {1, 4, 7, 0, 0}},
                                                              {0, 2, {2, 5, 0, 0, 0}},
                                                              {0, 3, {3, 6, 0, 10, 13}},
                                                              {1, 2, {0, 0, 8, 0, 0}},
                                                              {1, 3, {0, 0, 9, 11, 14}},
                                                              {2, 3, {0, 0, 0, 12, 15}}}) {
    const auto i = static_cast<std::uint64_t>(a);
    const auto j = static_cast<std::uint64_t>(b);
    EXPECT_EQ(zelsvm::pairIndex(i, j, 4), t++);
    model.pairCoefficients(target, i, j);
    EXPECT_EQ(valuesOf(target), expected) << a << ", " << b;
  }
  EXPECT_EQ(t, zelsvm::pairCount(4));
  for (const auto& [i, j] : {std::pair{1u, 1u}, std::pair{1u, 0u}, std::pair{0u, 4u}})
    EXPECT_EQ(failureOf<AppException>([&, a = i, b = j] { model.pairCoefficients(target, a, b); }),
              "Unrecognized label pair");
}

}  // namespace
