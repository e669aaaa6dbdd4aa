#include "files/user_file_writer.h"

#include <array>
#include <cmath>

#include "base/numbers.h"
#include "files/models/kernel_parameters.h"
#include "files/row_output.h"

namespace zelsvm {
namespace {

// To the nearest limit where 32 bits do not hold it; a NaN gives the lower one.
std::int32_t truncated(double value) {
  return static_cast<std::int32_t>(std::fmin(std::fmax(value, -2147483648.0), 2147483647.0));
}

}  // namespace

template <typename T>
UserFileWriter<T>::UserFileWriter(const std::string& path, std::uint64_t indexBase)
    : AbstractFileBase<T>(indexBase), file(zel::FileMode::write), output(file) {
  file.open(path);
}

template <typename T>
void UserFileWriter<T>::writeRows(const zelmag::AbstractMatrix<T>& matrix, const T* leading,
                                  std::uint64_t k, double leadingResolution) {
  const std::uint64_t leadingCount = leading != nullptr && k >= 2 ? k - 1 : 0;
  const std::uint64_t rowNumbers = leadingCount + matrix.valueCount() / matrix.rows() + 1;
  putRows(matrix.rows(), rowNumbers, output, [&](std::uint64_t row, zel::TextOutput& text) {
    for (std::uint64_t i = 0; i < leadingCount; ++i)
      text.put(leading[row * leadingCount + i], leadingResolution).put(" ");
    putPairs(matrix, row, text);
  });
}

template <typename T>
void UserFileWriter<T>::putPairs(const zelmag::AbstractMatrix<T>& matrix, std::uint64_t row,
                                 zel::TextOutput& text) const {
  const auto putPair = [&](std::uint64_t column, double value) {
    text.put(matrix.features()[column] + this->baseIndex).put(":").put(value).put(" ");
  };
  if (matrix.isSparse()) {
    for (int i = matrix.rowOffsets()[row]; i < matrix.rowOffsets()[row + 1]; ++i)
      putPair(static_cast<std::uint64_t>(matrix.columnIndices()[i]), matrix.values()[i]);
  } else {
    const T* const values = matrix.values() + row * matrix.cols();
    for (std::uint64_t column = 0; column < matrix.cols(); ++column)
      if (values[column] != 0) putPair(column, values[column]);
  }
  text.put("\n");
}

template <typename T>
void UserFileWriter<T>::writeModelHeader(const ModelHeader& header, std::uint64_t featureCount) {
  const auto has = [&](std::string_view keyword) {
    return hasParameter(header.kernelName, keyword);
  };
  writeLine(keywords::svmType, std::array{std::string_view(header.algorithmName)});
  writeLine(keywords::kernelType, std::array{std::string_view(header.kernelName)});
  if (has(keywords::degree)) writeLine(keywords::degree, std::array{truncated(header.degree)});
  if (has(keywords::gamma))
    writeLine(keywords::gamma,
              std::array{header.gamma == 0 ? 1 / static_cast<double>(featureCount) : header.gamma});
  if (has(keywords::coef0)) writeLine(keywords::coef0, std::array{header.coef0});
  writeScale(header, featureCount);
  writeLine(keywords::classCount, std::array{header.classCount});
  writeLine(keywords::totalVectors, std::array{header.totalVectors});
  writeLine(keywords::rho, header.rho);
  if (!header.labels.empty()) writeLine(keywords::labels, header.labels, 0);
  if (header.sigma != 0) writeLine(keywords::sigma, std::array{header.sigma});
  if (!header.probabilityA.empty()) writeLine(keywords::probabilityA, header.probabilityA);
  if (!header.probabilityB.empty()) writeLine(keywords::probabilityB, header.probabilityB);
  if (!header.classSizes.empty()) writeLine(keywords::classSizes, header.classSizes);
  output.put(keywords::vectors).put("\n");
}

template <typename T>
void UserFileWriter<T>::writeScale(const ModelHeader& header, std::uint64_t featureCount) {
  if (header.xRange.lower != header.xRange.upper) {
    writePair(keywords::xScale, header.xRange);
    const bool sparse = zelmag::fewInUse(featureCount, header.featureBounds.size());
    std::uint64_t next = 0;
    for (const auto& [feature, bounds] : header.featureBounds) {
      for (; !sparse && next < feature; ++next) writeBounds(next, {0, 0});
      writeBounds(feature, bounds);
      next = feature + 1;
    }
    for (; !sparse && next < featureCount; ++next) writeBounds(next, {0, 0});
  }
  if (header.yRange.lower != header.yRange.upper) {
    writePair(keywords::yScale, header.yRange);
    writePair(keywords::continuation, header.yBounds);
  }
}

template <typename T>
void UserFileWriter<T>::writeBounds(std::uint64_t feature, const zel::Interval& bounds) {
  output.put(keywords::continuation).put(feature);
  writePair(":", bounds);
}

template <typename T>
void UserFileWriter<T>::writePair(std::string_view keyword, const zel::Interval& pair) {
  writeLine(keyword, std::array{pair.lower, pair.upper},
            zel::boundResolution(pair.lower, pair.upper));
}

template <typename T>
template <typename Values>
void UserFileWriter<T>::writeLine(std::string_view keyword, const Values& values) {
  output.put(keyword);
  for (const auto value : values) output.put(" ").put(value);
  output.put("\n");
}

template <typename T>
template <typename Values>
void UserFileWriter<T>::writeLine(std::string_view keyword, const Values& values,
                                  double resolution) {
  output.put(keyword);
  for (const double value : values) output.put(" ").put(value, resolution);
  output.put("\n");
}

template <typename T>
void UserFileWriter<T>::finish() {
  output.flush();
  file.finish();
}

template <typename T>
void UserFileWriter<T>::close() {
  output.flush();
  file.close();
}

template class UserFileWriter<double>;

}  // namespace zelsvm
