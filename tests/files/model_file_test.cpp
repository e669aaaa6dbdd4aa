// Headers of model files: exact layout, reading back, broken files.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "base/errors.h"
#include "files/sparse_file_reader.h"
#include "files/user_file_writer.h"
#include "support/matrices.h"
#include "support/temp_file.h"

namespace {

using zel::AppException;
using zel::RuntimeException;
using zelsvm::ModelHeader;
using zelsvm::SparseFileReader;
using zelsvm::UserFileWriter;
using zeltest::failureOf;
using zeltest::TempFile;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

ModelHeader threeClasses() {
  ModelHeader header;
  header.algorithmName = "smo-C-classification";
  header.kernelName = "polynomial";
  header.degree = 3.9;
  header.gamma = 0;
  header.coef0 = -0.5;
  header.classCount = 3;
  header.totalVectors = 3;
  header.rho = {0.25, -1, 1e-7};
  header.labels = {-1, 0, 2.5};
  header.classSizes = {1, 0, 2};
  header.probabilityA = {-2, -3, -4};
  header.probabilityB = {0.5, 0, 1};
  header.xRange = {-1, 1};
  header.featureBounds = {{0, {0, 4}}, {1, {-1, 3}}};
  return header;
}

constexpr const char* threeClassText =
    "SvmType: smo-C-classification\nKernelType: polynomial\nDegree: 3\nGamma: 0.0769231\n"
    "Coef0: -0.5\nX-scale: -1 1\n  0: 0 4\n  1: -1 3\n  2: 0 0\n  3: 0 0\n  4: 0 0\n  5: 0 0\n"
    "  6: 0 0\n  7: 0 0\n  8: 0 0\n  9: 0 0\n  10: 0 0\n  11: 0 0\n  12: 0 0\nNrClass: 3\n"
    "TotalSV: 3\nRho: 0.25 -1 1e-07\nLabels: -1 0 2.5\nProbability_A: -2 -3 -4\n"
    "Probability_B: 0.5 0 1\nNrSV: 1 0 2\nSV:\n"
    "0.5 -0 1:1 13:0 \n1 2 2:-3 \n-1 1e+06 3:nan \n";

std::string writtenModel(const ModelHeader& header, std::uint64_t featureCount) {
  const TempFile file;
  UserFileWriter<double> writer(file.path(), 1);
  writer.writeModelHeader(header, featureCount);
  writer.close();
  return file.text();
}

TEST(ModelFile, HasTheExactLayoutWithEveryLine) {
  const TempFile file;
  double values[] = {1, 0, -3, nan};
  const double coefficients[] = {0.5, -0.0, 1, 2, -1, 1e6};
  int columns[] = {0, 12, 1, 2};
  int offsets[] = {0, 2, 3, 4};
  const auto matrix = zelmag::createMatrix<double>(values, columns, offsets, 13, 3);
  UserFileWriter<double> writer(file.path(), 1);
  writer.writeModelHeader(threeClasses(), 13);
  writer.writeRows(*matrix, coefficients, 3);
  writer.close();
  EXPECT_EQ(file.text(), threeClassText);
}

TEST(ModelFile, HasOnlyTheLinesThatApply) {
  ModelHeader header;
  header.algorithmName = "smo-epsilon-regression";
  header.kernelName = "radial";
  header.gamma = 0.5;
  header.totalVectors = 7;
  header.rho = {-2};
  header.sigma = 0.125;
  header.yRange = {0, 1};
  header.yBounds = {1.5, 9};
  EXPECT_EQ(writtenModel(header, 3),
            "SvmType: smo-epsilon-regression\nKernelType: radial\nGamma: 0.5\nY-scale: 0 1\n"
            "   1.5 9\nNrClass: 2\nTotalSV: 7\nRho: -2\nSigma: 0.125\nSV:\n");
  header = {};
  header.algorithmName = "smo-one-class";
  header.kernelName = "linear";
  header.rho = {1};
  EXPECT_EQ(writtenModel(header, 3),
            "SvmType: smo-one-class\nKernelType: linear\nNrClass: 2\nTotalSV: 0\nRho: 1\nSV:\n");
  header.kernelName = "sigmoid";
  EXPECT_EQ(writtenModel(header, 4),
            "SvmType: smo-one-class\nKernelType: sigmoid\nGamma: 0.25\nCoef0: 0\nNrClass: 2\n"
            "TotalSV: 0\nRho: 1\nSV:\n");
}

TEST(UserFileWriter, WritesDenseRowsWithoutZeros) {
  const TempFile file;
  double values[] = {0, -0.0, 0.5, nan, 0, 0};
  const double labels[] = {1, -1};
  const auto matrix = zelmag::createMatrix<double>(values, nullptr, nullptr, 3, 2);
  UserFileWriter<double> writer(file.path(), 0);
  writer.writeRows(*matrix, labels, 2);
  writer.writeRows(*matrix, nullptr, 2);
  writer.writeRows(*matrix, labels, 1);
  writer.close();
  EXPECT_EQ(file.text(), "1 2:0.5 \n-1 0:nan \n2:0.5 \n0:nan \n2:0.5 \n0:nan \n");
  UserFileWriter<double> full("/dev/full", 0);
  full.writeRows(*matrix, labels, 2);
  EXPECT_EQ(failureOf<AppException>([&] { full.close(); }), "failed writing to file: /dev/full");
}

// Reads a model file with two support vectors; what was read before a failure stays in the reader.
struct Reading {
  explicit Reading(const std::string& text) : file(text), reader(file.path(), 1) {
    failure = failureOf([&] { reader.read(); });
    if (failure.starts_with(file.path())) failure.erase(0, file.path().size());
  }
  TempFile file;
  SparseFileReader<double> reader;
  std::string failure;
};

TEST(ModelFile, HeaderTakesOddLinesAsSpecified) {
  const Reading reading(
      "\n  SvmType: a b\nKernelType:\nUnknown: 1\nRho: 7 8\nDegree: 0x10\nGamma: 1\nGamma: 2x\n"
      "X-scale: 0 1\n 1: 3 4\n 0: 5\n 2 6 7\n SV:\n\nKernelType: k\n 3: 8 9\nY-scale: 1 1\n  5 6\n"
      "Y-scale: 0 2\n 7 8\nNrClass: 3\nTotalSV: 1\nLabels: 1 2 3 4\nBaseIdx: 0\nSV:\n"
      "1 2 0:1\nSV: 3 0:2\n");
  ASSERT_EQ(reading.failure, "Error in loading SVM numeric values");
  const ModelHeader& header = reading.reader.header();
  EXPECT_EQ(header.algorithmName + header.kernelName, "ak");
  EXPECT_EQ(header.rho, std::vector<double>{7});
  EXPECT_EQ(header.labels, (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(header.degree, 16);
  EXPECT_EQ(header.gamma, 2);
  ASSERT_EQ(header.featureBounds.size(), 1u);
  EXPECT_EQ(header.featureBounds.at(1).lower, 3);
  EXPECT_EQ(header.yBounds.upper, 8);
  EXPECT_EQ(reading.reader.indexBase(), 0u);
  EXPECT_EQ(reading.reader.rows(), 2u);
}

TEST(ModelFile, LinesWithoutPairsLeaveTheirClass) {
  Reading reading(
      "SvmType: a\nNrClass: 3\nTotalSV: 6\nNrSV: 2 1 3\nSV:\n"
      "1 2\n3 4 1:1\n\n5 6 \n7 8 1:2\n9 10\n11 12 2:3\n");
  ASSERT_EQ(reading.failure, "");
  EXPECT_EQ(reading.reader.header().classSizes, (std::vector<int>{1, 0, 2}));
  EXPECT_EQ(reading.reader.rows(), 3u);
  EXPECT_EQ(reading.reader.leading()[0], 3);
  EXPECT_EQ(reading.reader.leading()[5], 12);
  Reading oneClass("SvmType: a\nNrClass: 1\nRho:\nNrSV: 2\nSV:\n1:2\n3:4\n");
  ASSERT_EQ(oneClass.failure, "");
  EXPECT_EQ(oneClass.reader.valueTotal(), 2u);
  EXPECT_EQ(failureOf<RuntimeException>([&] { return &oneClass.reader.leading(); }),
            "The SVM coefficients are absent.");
}

TEST(ModelFile, RefusesBrokenModels) {
  const std::string error = "Error in loading SVM numeric values";
  const std::string vectors = "SV:\n1 1:1\n2 1:2\n";
  struct Case {
    std::string header, failure;
  };
  for (const Case& c :
       {Case{"TotalSV: 3\n" + vectors, error},
        Case{"NrSV: 1 2\n" + vectors, error},
        Case{"NrSV: -1 3\n" + vectors, error},
        Case{"NrSV: 3 -1\n" + vectors, error},
        Case{"NrSV: 2\n" + vectors, error},
        Case{"NrSV: 2147483647 2147483647\n" + vectors, error},
        Case{"NrSV: 1 1\nNrClass: 3\nSV:\n1 2 1:1\n1 3 2:2\n", error},
        Case{"NrClass: 3\nRho: 1 2\n" + vectors, error},
        Case{"Rho: 1:2\n" + vectors, error},
        Case{"Labels: 1\n" + vectors, error},
        Case{"NrClass: 3\nSV:\n1 1:1 2:2\n", error},
        Case{"NrClass: 0\n" + vectors, error},
        Case{"NrClass: x\n" + vectors, ":2:10: \"x\" is no count."},
        Case{"TotalSV: 2.5\n" + vectors, ":2:10: \"2.5\" is no count."},
        Case{"TotalSV: -1\n" + vectors, ":2:10: \"-1\" is no count."},
        Case{"NrSV: 1 1x\n" + vectors, ":2:9: \"1x\" is no count."},
        Case{"BaseIdx: one\n" + vectors, ":2:10: \"one\" is no count."},
        Case{"NrClass: 4294967295\n" + vectors, "No proper data is found in input file"},
        Case{"NrClass: 4294967295\nRho: 1 2\n" + vectors, error},
        Case{"NrClass: 4294967295\nNrSV: 1 2\n" + vectors, error},
        Case{"BaseIdx: 2\n" + vectors, "Unrecognizable base index"},
        Case{"X-scale: 0 1\n 4294967295: 1 2\n" + vectors, error},
        Case{"TotalSV: 2\n", "No proper data is found in input file"},
        Case{"SV:\n1 0:1\n", "Base index underflow detected in sparse data"},
        Case{"SV:\n1:1 2:2\n", error}})
    EXPECT_EQ(Reading("SvmType: a\n" + c.header).failure, c.failure) << c.header;
}

}  // namespace
