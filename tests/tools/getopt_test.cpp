#include "tools/options/getopt.h"

#include <gtest/gtest.h>

#include "base/errors.h"
#include "support/temp_file.h"
#include "tools/command_line.h"

namespace {

using zelsvm_opt::Tool;

// What the walk over the trainer's arguments gives, "-c=10" for an option with its argument, and
// after "|" the arguments it left; then after "!" what it warns of.
std::string walk(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = {"program"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const auto argv = zeltest::pointers(words);
  std::vector<std::string> warnings;
  zelsvm_opt::OptionParser parser(Tool::train, argv, warnings);
  std::string text;
  while (const auto given = parser.next()) {
    text += given->spelling;
    if (given->argument != nullptr) text += std::string("=") + given->argument;
    text += ' ';
  }
  text += '|';
  for (const char* const name : parser.rest()) text += std::string(" ") + name;
  for (const std::string& warning : warnings) text += " ! " + warning;
  return text;
}

std::string unknown(const std::string& option) {
  return "! option \"" + option + "\" is unknown and ignored";
}

const std::string lacking = "! option \"-c\" lacks its argument and is ignored";
const std::string asFile = "\" stands behind a file name and is taken for one";

struct WalkCase {
  std::vector<std::string> arguments;
  std::string expected;
};

TEST(OptionParser, Letters) {
  const std::vector<WalkCase> cases = {
      {{}, "|"},
      {{"-q", "-X"}, "-q -X |"},
      {{"-qX", "file"}, "-q -X | file"},
      {{"-c10"}, "-c=10 |"},
      {{"-qc", "10", "f"}, "-q -c=10 | f"},
      {{"-qc10X", "f"}, "-q -c=10X | f"},
      {{"-c", "-q", "-X"}, "-c=-q -X |"},
      {{"-c", "", "-X"}, "-c= -X |"},
      {{"-c", "/tmp/file"}, "-c=/tmp/file |"},
      {{"-c", "--", "f"}, "-c=-- | f"},
      {{"/qX", "/c10", "/c", "10"}, "/q /X /c=10 /c=10 |"},
      // Unknown letters, and letters without their argument.
      {{"-zq"}, "-q | " + unknown("-z")},
      {{"-q:X"}, "-q -X | " + unknown("-:")},
      {{"--1q"}, "-q | " + unknown("--") + " " + unknown("-1")},
      {{"/z"}, "| " + unknown("/z")},
      {{"-qc"}, "-q | " + lacking},
      // Ends.
      {{"-q", "--", "-X", "--gama"}, "-q | -X --gama"},
      {{"-q", "-", "-X"}, "-q | -X"},
      {{"-q", "", "X"}, "-q |  X"},
      {{"-X", "f", "-q", "-"}, "-X | f -q - ! \"-q" + asFile + " ! \"-" + asFile},
      {{"./-q"}, "| ./-q"},
  };
  for (const auto& [arguments, expected] : cases)
    EXPECT_EQ(walk(arguments), expected) << testing::PrintToString(arguments);
}

TEST(OptionParser, SlashesBeginOptionsAndPaths) {
  for (const auto& [arguments, expected] : std::vector<WalkCase>{
           {{"/q", "/data/q", "/X"}, "/q | /data/q /X"},
           {{"//"}, "| //"},
           {{"/X/"}, "| /X/"},
           {{"/q", "/proc", "/q"}, "/q | /proc /q"},  // it is there
           {{"/", "q"}, "| / q"},
           {{"/cproc", "f"}, "/c=proc | f"},  // it is not
       })
    EXPECT_EQ(walk(arguments), expected) << testing::PrintToString(arguments);
}

TEST(OptionParser, LongNames) {
  for (const auto& [arguments, expected] : std::vector<WalkCase>{
           {{"--cost", "10", "--quiet", "f"}, "--cost=10 --quiet | f"},
           {{"--cost=10", "-q"}, "--cost=10 -q |"},
           {{"--x-scale=", "--weights=1:2=3"}, "--x-scale= --weights=1:2=3 |"},
           {{"--gamma", "--quiet", "f"}, "--gamma=--quiet | f"},
       })
    EXPECT_EQ(walk(arguments), expected) << testing::PrintToString(arguments);
  const std::string behind = "stands behind a file name, and options come first.";
  for (const auto& [arguments, failure] : std::vector<WalkCase>{
           {{"--gama=0.5"}, "Option --gama is unknown; did you mean --gamma?"},
           {{"--tol", "1"}, "Option --tol is unknown; did you mean --tolerance?"},
           {{"--svm_type", "1"}, "Option --svm_type is unknown; did you mean --svm-type?"},
           {{"--zebra"}, "Option --zebra is unknown."},
           {{"--restore=x"}, "Option --restore is unknown."},  // the scale tool has it
           {{"--c"}, "Option --c is unknown; did you mean --cost?"},
           {{"-q", "--cost"}, "Option --cost lacks its argument."},
           {{"--quiet=1"}, "Option --quiet takes no argument."},
           {{"f", "--cost=10"}, "Option --cost=10 " + behind},
           {{"f", "g", "--foo"}, "Option --foo " + behind},
       })
    EXPECT_EQ(zeltest::failureOf<zel::AppException>([&] { walk(arguments); }), failure);
}

TEST(OptionParser, NoArgumentsAtAll) {
  std::vector<std::string> warnings;
  EXPECT_EQ(zelsvm_opt::OptionParser(Tool::train, {}, warnings).next(), std::nullopt);
}

}  // namespace
