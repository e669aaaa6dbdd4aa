#include "files/models/model_header_reader.h"

#include <cmath>

#include "base/errors.h"
#include "base/numbers.h"
#include "files/file_base.h"
#include "files/models/class_sizes.h"
#include "files/models/kernel_parameters.h"

namespace zelsvm {
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

// The field that the keyword names; null when it is none of these.
template <typename Member, std::size_t size>
const Field<Member>* findField(const Field<Member> (&fields)[size], std::string_view keyword) {
  for (const Field<Member>& field : fields)
    if (field.keyword == keyword) return &field;
  return nullptr;
}

}  // namespace

bool ModelHeaderReader::readLine(std::string_view line) {
  SampleLine tokens(line, &warnings);
  if (scale.continues(line)) {
    scale.readBounds(tokens);
    return false;
  }
  const std::string_view keyword = tokens.token();
  if (keyword == keywords::vectors) {
    warnOfMissing();
    return true;
  }
  if (keyword.empty()) return false;
  if (SampleLine(tokens).token().empty()) {
    warnings.add(keyword, "line", "has no value and is ignored");
  } else if (!readValues(keyword, tokens)) {
    warnings.add(keyword, "line", "is unknown and ignored");
  } else {
    tokens.warnOfRest();
    if (!seen.emplace(keyword).second) warnings.add(keyword, "line", "replaces an earlier one");
  }
  return false;
}

// Reads what stands behind a keyword; false for an unknown one.
bool ModelHeaderReader::readValues(std::string_view keyword, SampleLine& line) {
  if (const auto* const name = findField(nameFields, keyword))
    header.*name->member = line.token();
  else if (const auto* const number = findField(numberFields, keyword))
    header.*number->member = line.number(line.token(), number->keyword);
  else
    return readList(keyword, line) || readCount(keyword, line) || scale.readRange(keyword, line);
  return true;
}

bool ModelHeaderReader::readList(std::string_view keyword, SampleLine& line) {
  if (const auto* const list = findField(pairFields, keyword)) {
    const std::uint64_t pairs = header.classCount * (header.classCount - 1) / 2;
    readNumbers(list->keyword, line, pairs, header.*list->member);
  } else if (keyword == keywords::labels) {
    const SampleLine labels = line;
    readNumbers(keywords::labels, line, header.classCount, header.labels);
    warnOfEqualLabels(labels);
  } else if (keyword == keywords::classSizes) {
    readSizes(line);
  } else {
    return false;
  }
  return true;
}

void ModelHeaderReader::readNumbers(std::string_view keyword, SampleLine& line, std::uint64_t count,
                                    std::vector<double>& numbers) {
  numbers.clear();
  while (numbers.size() < count) {
    const std::string_view token = line.token();
    if (token.empty() || token.find(':') != std::string_view::npos) throwLoadingError();
    numbers.push_back(line.number(token, keyword));
  }
}

void ModelHeaderReader::readSizes(SampleLine& line) {
  header.classSizes.clear();
  while (header.classSizes.size() < header.classCount) {
    const std::string_view token = line.token();
    if (token.empty()) throwLoadingError();
    header.classSizes.push_back(checkedCount(token, zel::readInteger(token)));
  }
}

void ModelHeaderReader::warnOfEqualLabels(SampleLine line) {
  std::set<double> labels;
  for (const double label : header.labels) {
    const std::string_view token = line.token();
    if (std::isfinite(label) && !labels.insert(label).second)
      warnings.add(token, "label", "is there already");
  }
}

bool ModelHeaderReader::readCount(std::string_view keyword, SampleLine& line) {
  const bool known = keyword == keywords::classCount || keyword == keywords::totalVectors ||
                     keyword == keywords::baseIndex;
  if (!known) return false;
  const std::string_view token = line.token();
  const std::uint32_t count = checkedCount(token, zel::readUnsigned(token));
  if (keyword == keywords::classCount) {
    if (count == 0) throwLoadingError();
    header.classCount = count;
  } else if (keyword == keywords::totalVectors) {
    header.totalVectors = count;
  } else {
    if (count >= 2) throw zel::RuntimeException("Unrecognizable base index");
    indexBase = count;
  }
  return true;
}

template <typename T>
T ModelHeaderReader::checkedCount(std::string_view token, zel::ParsedNumber<T> parsed) const {
  if (parsed.extent != zel::NumberExtent::all)
    zel::throwAppException("%s: %s is no count.", warnings.place(token).c_str(),
                           zel::quoted(token).c_str());
  return parsed.value;
}

// What the model needs and can be made without; the rest is missed when it is made.
void ModelHeaderReader::warnOfMissing() {
  const auto lacks = [this](std::string_view keyword) { return !seen.contains(keyword); };
  const auto lacksParameter = [&](std::string_view keyword) {
    return hasParameter(header.kernelName, keyword) && lacks(keyword);
  };
  if (lacksParameter(keywords::degree)) warnings.addMissing("\"Degree:\" line", "it counts as 0");
  if (lacksParameter(keywords::gamma))
    warnings.addMissing("\"Gamma:\" line", "it counts as one divided by the number of features");
  if (lacksParameter(keywords::coef0)) warnings.addMissing("\"Coef0:\" line", "it counts as 0");
  if (lacks(keywords::classCount)) warnings.addMissing("\"NrClass:\" line", "it counts as 2");
  if (lacks(keywords::totalVectors))
    warnings.addMissing("\"TotalSV:\" line", "the support vectors are not counted");
  scale.warnOfMissing();
}

}  // namespace zelsvm
