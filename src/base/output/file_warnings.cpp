#include "base/output/file_warnings.h"

#include <algorithm>
#include <utility>

#include "base/output/console.h"

namespace zel {

namespace {

std::string_view withoutBlanks(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

std::string_view fateOf(NumberExtent extent) {
  switch (extent) {
    case NumberExtent::all:
      break;
    case NumberExtent::front:
      return "goes on behind its number, which is ignored";
    case NumberExtent::none:
      return "is no number and counts as 0";
    case NumberExtent::beyondRange:
      return "is out of range and counts as another number";
  }
  return "";
}

std::string quoted(std::string_view text) {
  constexpr std::size_t limit = 40;
  std::string result = "\"";
  for (const char c : text.substr(0, limit)) {
    const bool isControl = static_cast<unsigned char>(c) < ' ' || c == '\x7f';
    result += isControl ? '?' : c;
  }
  return result + (text.size() > limit ? "...\"" : "\"");
}

std::string countOf(std::uint64_t count) {
  return count == 1 ? "" : " (the first of " + std::to_string(count) + ")";
}

void FileWarnings::clear() {
  kinds.clear();
  lineNumber = 0;
}

void FileWarnings::append(const FileWarnings& later) {
  for (const Kind& kind : later.kinds) {
    if (Kind* const known = find(kind.what, kind.fate))
      known->count += kind.count;
    else
      kinds.push_back(kind);
  }
}

void FileWarnings::forgetLine() {
  for (Kind& kind : kinds)
    if (kind.line == lineNumber) kind.count -= std::exchange(kind.inLine, 0);
  std::erase_if(kinds, [](const Kind& kind) { return kind.count == 0; });
}

FileWarnings::Kind* FileWarnings::find(std::string_view what, std::string_view fate) {
  const auto found = std::find_if(kinds.begin(), kinds.end(), [&](const Kind& kind) {
    return kind.what == what && kind.fate == fate;
  });
  return found == kinds.end() ? nullptr : &*found;
}

FileWarnings::Kind& FileWarnings::kindOf(std::string_view part, std::string_view what,
                                         std::string_view fate) {
  if (Kind* const known = find(what, fate)) return *known;
  std::string first = place(part) + ": ";
  first.append(what).append(" ").append(quoted(part)).append(" ").append(fate);
  return kinds.emplace_back(Kind{what, fate, std::move(first)});
}

void FileWarnings::add(std::string_view part, std::string_view what, std::string_view fate) {
  part = withoutBlanks(part);
  if (part.empty()) return;
  Kind& kind = kindOf(part, what, fate);
  ++kind.count;
  if (std::exchange(kind.line, lineNumber) != lineNumber) kind.inLine = 0;
  ++kind.inLine;
}

void FileWarnings::addNumber(std::string_view part, std::string_view what, NumberExtent extent) {
  if (extent != NumberExtent::all) add(part, what, fateOf(extent));
}

void FileWarnings::addRest(std::string_view rest) {
  add(rest, "text", "at the end of the line is ignored");
}

void FileWarnings::addMissing(std::string_view what, std::string_view fate) {
  std::string sentence = path + ": no ";
  sentence.append(what).append(": ").append(fate);
  kinds.push_back({what, fate, std::move(sentence), 1, 0, 0});
}

std::string FileWarnings::place(std::string_view part) const {
  return path + ":" + std::to_string(lineNumber) + ":" +
         std::to_string(part.data() - lineStart + 1);
}

void FileWarnings::tell() const {
  for (const Kind& kind : kinds) warn(kind.first + countOf(kind.count));
}

}  // namespace zel
