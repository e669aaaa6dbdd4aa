#include "base/errors.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "base/output/console.h"
#include "text_match.h"

namespace {

using zel::AppException;
using zel::RuntimeException;

template <typename Expected, typename Call>
std::string thrownText(Call call) {
  try {
    call();
  } catch (const Expected& error) {
    return error.what();
  }
  return "nothing was thrown";
}

TEST(Errors, Texts) {
  EXPECT_STREQ(AppException("100%d").what(), "100%d");
  EXPECT_STREQ(RuntimeException("plain%s").what(), "plain%s");
  EXPECT_STREQ(RuntimeException("text", "file", -3).what(), "file(-3): text\n");
  EXPECT_STREQ(RuntimeException("check", "kind", "detail", "file", 7).what(),
               "file(7): check: kind - detail.\n");
  EXPECT_EQ(thrownText<AppException>([] { zel::throwAppException("%s and %i", "a", 2); }),
            "a and 2");
  EXPECT_EQ(thrownText<RuntimeException>([] { zel::throwRuntimeException("%s", "f", 1); }),
            "f(1): %s\n");
}

TEST(Errors, LongTextsAreCut) {
  const std::string full(8191, 'x');
  const std::string longer = full + "yz";
  EXPECT_EQ(AppException(full.c_str()).what(), full);
  EXPECT_EQ(AppException(longer.c_str()).what(), full);
  EXPECT_EQ(RuntimeException(longer.c_str()).what(), full);
  EXPECT_EQ(RuntimeException(longer.c_str(), "file", 1).what(),
            ("file(1): " + full).substr(0, 8191));
  EXPECT_EQ(thrownText<AppException>([&] { zel::throwAppException("%s", longer.c_str()); }), full);
}

TEST(Console, PrintsFormattedAndCut) {
  const auto printed = [](const std::string& text) {
    testing::internal::CaptureStdout();
    zel::printMessage("%s", text.c_str());
    return testing::internal::GetCapturedStdout();
  };
  EXPECT_EQ(printed("100%d\n"), "100%d\n");
  EXPECT_EQ(printed(""), "");
  EXPECT_EQ(printed(std::string(9000, 'x')), std::string(8191, 'x'));
}

struct GatheringSink : zel::MessageSink {
  using MessageSink::MessageSink;
  void write(std::string_view text) override { gathered += text; }
  std::string gathered;
};

// Inner scopes come first, threads have their own sinks, and the console is where all began.
TEST(Console, MessagesGoToTheSinkOfTheThread) {
  GatheringSink outer(false);
  GatheringSink inner(true);
  testing::internal::CaptureStdout();
  {
    const zel::SinkScope scope(outer);
    EXPECT_FALSE(zel::isVerbose());
    zel::printMessage("a%d", 1);
    {
      const zel::SinkScope nested(inner);
      EXPECT_TRUE(zel::isVerbose());
      zel::printMessage("b");
    }
    std::thread([] { zel::printMessage("thread %d\n", zel::isVerbose()); }).join();
    zel::printMessage("c");
  }
  zel::printMessage("console\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "thread 1\nconsole\n");
  EXPECT_EQ(outer.gathered, "a1c");
  EXPECT_EQ(inner.gathered, "b");
}

[[noreturn]] void printToFullDevice() {
  if (std::freopen("/dev/full", "w", stdout) == nullptr) std::_Exit(5);
  zel::printMessage("text\n");
  zel::printMessage("text\n");
  std::_Exit(zel::isOutputLost() ? 3 : 4);
}

TEST(ConsoleDeathTest, LostOutputIsToldOnce) {
  EXPECT_EXIT(printToFullDevice(), testing::ExitedWithCode(3),
              "^Standard output cannot be written: No space left on device\\.\n$");
}

}  // namespace
