// What a text file holds that its author can hardly have meant, and what becomes of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/numbers.h"

namespace zel {

// Collects such places of one file by kind; each kind is told in one sentence, with its first place
// and the number of all. The words that name a kind ("label", "is no number") must outlive this.
class FileWarnings {
 public:
  // The first line to begin stands behind so many others.
  explicit FileWarnings(std::string path, std::uint64_t linesBefore = 0)
      : path(std::move(path)), lineNumber(linesBefore) {}

  // Forgets everything; the file is read from its start again.
  void clear();
  // Adds what was found in lines behind these.
  void append(const FileWarnings& later);
  // What is added from now on stands in this line, which comes behind the last one.
  void beginLine(std::string_view line) {
    ++lineNumber;
    lineStart = line.data();
  }

  // Takes back what was added in this line, as nothing in it counts.
  void forgetLine();

  // A part of the line, what it is and what becomes of it: label "cat" is no number. Nothing for a
  // part of blanks.
  void add(std::string_view part, std::string_view what, std::string_view fate);
  // The same for a part that is read as a number: nothing where all of it is one.
  void addNumber(std::string_view part, std::string_view what, NumberExtent extent);
  // The end of the line, which is ignored.
  void addRest(std::string_view rest);
  // What the file lacks, and what takes its place.
  void addMissing(std::string_view what, std::string_view fate);

  // Where a part of the line stands: path:line:column, both counted from 1.
  [[nodiscard]] std::string place(std::string_view part) const;

  // Hands one sentence for each kind, in the order in which they were found, to zel::warn.
  void tell() const;

 private:
  struct Kind {
    std::string_view what;
    std::string_view fate;
    std::string first;
    std::uint64_t count = 0;
    std::uint64_t line = 0;    // the last one that has it
    std::uint64_t inLine = 0;  // of the count
  };

  // Null where it was not yet found.
  Kind* find(std::string_view what, std::string_view fate);
  Kind& kindOf(std::string_view part, std::string_view what, std::string_view fate);

  std::string path;
  std::uint64_t lineNumber;
  const char* lineStart = nullptr;
  std::vector<Kind> kinds;
};

// What becomes of a number that is not all that its text says; empty where it is.
std::string_view fateOf(NumberExtent extent);

// Text for a sentence: between double quotes, not too long, without control characters.
std::string quoted(std::string_view text);

// " (the first of 12)"; empty for a count of 1.
std::string countOf(std::uint64_t count);

}  // namespace zel
