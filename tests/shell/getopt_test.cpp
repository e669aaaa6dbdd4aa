#include "zelsvm/getopt.h"

#include <gtest/gtest.h>

#include "shell/command_line.h"

namespace {

// What the walk over the arguments gives, "c=10" for a letter with its argument, and after "|" the
// arguments it left.
std::string walk(const std::vector<std::string>& arguments, const std::string& letters) {
  std::vector<std::string> words = {"program"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const auto argv = zeltest::pointers(words);
  zelsvm_opt::OptionParser parser(argv, letters);
  std::string text;
  while (const auto letter = parser.next()) {
    text += *letter;
    if (letters.find(std::string{*letter, ':'}) != std::string::npos)
      text += std::string("=") + parser.argument();
    text += ' ';
  }
  text += '|';
  for (std::size_t i = parser.index(); i < argv.size(); ++i) text += std::string(" ") + argv[i];
  return text;
}

struct WalkCase {
  std::vector<std::string> arguments;
  std::string expected;
};

TEST(OptionParser, Walks) {
  const std::vector<WalkCase> cases = {
      {{}, "|"},
      {{"-q", "-X"}, "q X |"},
      {{"-qX", "file"}, "q X | file"},
      {{"-c10"}, "c=10 |"},
      {{"-c", "10"}, "c=10 |"},
      {{"-qc", "10", "f"}, "q c=10 | f"},
      {{"-qc10X", "f"}, "q c=10X | f"},
      {{"-c", "-q", "-X"}, "c=-q X |"},
      {{"-c", "", "-X"}, "c= X |"},
      {{"-c", "/tmp/file"}, "c=/tmp/file |"},
      {{"-X", "f", "-q"}, "X | f -q"},
      {{"/qX", "/c10", "/c", "10"}, "q X c=10 c=10 |"},
      // Unknown letters, and letters without their argument.
      {{"-zq"}, "? q |"},
      {{"-:"}, "? |"},
      {{"-q:X"}, "q ? X |"},
      {{"-c"}, "? |"},
      {{"-qc"}, "q ? |"},
      {{"/", "-q"}, "? q |"},
      {{"--q"}, "? q |"},
      {{"-\xE9q"}, "? q |"},
      // Ends.
      {{"-q", "--", "-X"}, "q | -X"},
      {{"-q", "-", "-X"}, "q | -X"},
      {{"-q", "", "-X"}, "q |  -X"},
      {{"/q", "/data/q", "/X"}, "q | /data/q /X"},
      {{"//"}, "| //"},
      {{"/X/"}, "| /X/"},
      {{"./-q"}, "| ./-q"},
  };
  for (const auto& [arguments, expected] : cases)
    EXPECT_EQ(walk(arguments, "c:qX"), expected) << testing::PrintToString(arguments);
}

TEST(OptionParser, ColonsAndDashesAreLettersOnlyWhereListed) {
  EXPECT_EQ(walk({"-q", "-c", "f"}, ""), "? ? | f");
  EXPECT_EQ(walk({"--", "f"}, "-q"), "| f");
}

TEST(OptionParser, NoArgumentsAtAll) {
  zelsvm_opt::OptionParser parser({}, "q");
  EXPECT_EQ(parser.next(), std::nullopt);
}

}  // namespace
