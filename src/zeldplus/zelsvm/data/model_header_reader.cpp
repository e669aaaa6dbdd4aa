#include "zeldplus/zelsvm/data/model_header_reader.h"

#include <limits>
#include <string>

#include "zeldplus/inc/zelerrors.h"
#include "zeldplus/inc/zelmemory.h"
#include "zeldplus/inc/zelnumbers.h"
#include "zeldplus/zelsvm/data/file_base.h"

namespace zelsvm::inline ZEL_PLATFORM {
namespace {

template <typename Member>
struct Field {
  std::string_view keyword;
  Member ModelHeader::*member;
};

constexpr Field<std::string> nameFields[] = {{keywords::svmType, &ModelHeader::algorithmName},
                                             {keywords::kernelType, &ModelHeader::kernelName}};

constexpr Field<double> numberFields[] = {{keywords::degree, &ModelHeader::degree},
                                          {keywords::gamma, &ModelHeader::gamma},
                                          {keywords::coef0, &ModelHeader::coef0},
                                          {keywords::sigma, &ModelHeader::sigma}};

// Lists with one number per pair of classes.
constexpr Field<std::vector<double>> pairFields[] = {
    {keywords::rho, &ModelHeader::rho},
    {keywords::probabilityA, &ModelHeader::probabilityA},
    {keywords::probabilityB, &ModelHeader::probabilityB}};

// The member of the header that the keyword names; null when it is none of these.
template <typename Member, std::size_t size>
Member* findMember(const Field<Member> (&fields)[size], std::string_view keyword,
                   ModelHeader& header) {
  for (const Field<Member>& field : fields)
    if (field.keyword == keyword) return &(header.*field.member);
  return nullptr;
}

void readNumbers(SampleLine line, std::uint64_t count, std::vector<double>& numbers) {
  numbers.clear();
  while (numbers.size() < count) {
    const std::string_view token = line.token();
    if (token.empty() || token.find(':') != std::string_view::npos) throwLoadingError();
    numbers.push_back(zel::parseDouble(token));
  }
}

void readSizes(SampleLine line, std::uint64_t count, std::vector<int>& sizes) {
  sizes.clear();
  while (sizes.size() < count) {
    const std::string_view token = line.token();
    if (token.empty()) throwLoadingError();
    sizes.push_back(zel::parseInteger(token));
  }
}

// Leaves the pair alone unless both numbers are there.
bool readPair(SampleLine line, double2& pair) {
  const std::string_view first = line.token();
  const std::string_view second = line.token();
  if (second.empty()) return false;
  pair = {zel::parseDouble(first), zel::parseDouble(second)};
  return true;
}

}  // namespace

void throwLoadingError() { throw zel::RuntimeException("Error in loading SVM numeric values"); }

bool ModelHeaderReader::readLine(std::string_view line) {
  if (block != Block::none && line.starts_with(' ')) {
    readContinuation(SampleLine(line));
    return false;
  }
  block = Block::none;
  SampleLine tokens(line);
  const std::string_view keyword = tokens.token();
  if (keyword == keywords::vectors) return true;
  const std::string_view value = SampleLine(tokens).token();
  if (value.empty()) return false;
  if (std::string* const name = findMember(nameFields, keyword, header))
    *name = value;
  else if (double* const number = findMember(numberFields, keyword, header))
    *number = zel::parseDouble(value);
  else if (!readList(keyword, tokens)) {
    readCount(keyword, zel::parseUnsigned(value));
    readScale(keyword, tokens);
  }
  return false;
}

void ModelHeaderReader::readCount(std::string_view keyword, std::uint32_t count) {
  if (keyword == keywords::classCount) {
    if (count == 0) throwLoadingError();
    header.classCount = count;
  } else if (keyword == keywords::totalVectors) {
    header.totalVectors = count;
  } else if (keyword == keywords::baseIndex) {
    if (count >= 2) throw zel::RuntimeException("Unrecognizable base index");
    indexBase = count;
  }
}

bool ModelHeaderReader::readList(std::string_view keyword, SampleLine line) {
  if (std::vector<double>* const list = findMember(pairFields, keyword, header))
    readNumbers(line, header.classCount * (header.classCount - 1) / 2, *list);
  else if (keyword == keywords::labels)
    readNumbers(line, header.classCount, header.labels);
  else if (keyword == keywords::classSizes)
    readSizes(line, header.classCount, header.classSizes);
  else
    return false;
  return true;
}

void ModelHeaderReader::readScale(std::string_view keyword, SampleLine line) {
  const bool features = keyword == keywords::xScale;
  if (!features && keyword != keywords::yScale) return;
  double2& range = features ? header.xRange : header.yRange;
  if (readPair(line, range) && range.y > range.x)
    block = features ? Block::features : Block::targets;
}

void ModelHeaderReader::readContinuation(SampleLine line) {
  if (block == Block::targets) {
    readPair(line, header.yBounds);
    return;
  }
  const std::uint64_t feature = zel::parseUnsigned(line.tokenBeforeColon());
  double2 bounds{};
  if (!readPair(line, bounds)) return;
  if (feature >= std::numeric_limits<std::int32_t>::max()) throwLoadingError();
  if (feature >= header.featureBounds.size()) {
    zel::requireHostMemory(feature + 1, sizeof(double2));
    header.featureBounds.resize(feature + 1);
  }
  header.featureBounds[feature] = bounds;
}

void settleClassSizes(ModelHeader& header, std::uint64_t lineCount,
                      const std::vector<std::uint64_t>& skippedLines) {
  if (lineCount < header.totalVectors) throwLoadingError();
  if (header.classSizes.empty()) return;
  if (header.classSizes.size() != header.classCount) throwLoadingError();
  auto skipped = skippedLines.begin();
  std::uint64_t classEnd = 0;
  for (int& size : header.classSizes) {
    if (size < 0) throwLoadingError();
    classEnd += static_cast<std::uint64_t>(size);
    for (; skipped != skippedLines.end() && *skipped < classEnd; ++skipped) --size;
  }
  if (classEnd != lineCount) throwLoadingError();
}

}  // namespace zelsvm::inline ZEL_PLATFORM
