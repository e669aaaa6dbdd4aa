#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "text_match.h"
#include "zeldplus/inc/zelconsole.h"
#include "zeldplus/inc/zeldev.h"
#include "zeldplus/inc/zelerrors.h"

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

// The process ends with status 3 when printing reports a closed output, 4 when it does not.
[[noreturn]] void printToFullDevice() {
  if (std::freopen("/dev/full", "w", stdout) == nullptr) std::_Exit(5);
  try {
    zel::printMessage("text\n");
  } catch (const zel::OutputClosed&) {
    std::_Exit(3);
  }
  std::_Exit(4);
}

TEST(ConsoleDeathTest, FailedOutputIsSeen) {
  EXPECT_EXIT(printToFullDevice(), testing::ExitedWithCode(3), "");
}

TEST(SafeCall, NamesThePlaceOfTheCall) {
  const auto here = std::source_location::current();
  const std::string text =
      thrownText<RuntimeException>([] { zel::zelSafeCall(cudaErrorInvalidDevice); });
  EXPECT_EQ(text, zel::sourceName(here) + "(" + std::to_string(here.line() + 2) +
                      "): zelSafeCall: CUDA runtime error - invalid device ordinal.\n");
}

TEST(SafeCall, DriverErrorsNameTheCheckFirst) {
  const auto here = std::source_location::current();
  const std::string text =
      thrownText<RuntimeException>([] { zel::zelSafeDriverCall(static_cast<CUresult>(2)); });
  const std::string inner = zel::sourceName(here) + "(" + std::to_string(here.line() + 2) +
                            "): CUDA driver error - out of memory\n\n";
  EXPECT_TRUE(text.ends_with(inner)) << text;
  EXPECT_TRUE(zeltest::matches(text.substr(0, text.size() - inner.size()),
                               "zeldplus/util/zelutil\\([0-9]+\\): "))
      << text;
}

TEST(SafeCall, DriverTexts) {
  const auto driverText = [](int code) {
    const std::string text =
        thrownText<RuntimeException>([&] { zel::zelSafeDriverCall(static_cast<CUresult>(code)); });
    const auto begin = text.rfind(" - ") + 3;
    return text.substr(begin, text.find('\n', begin) - begin);
  };
  const std::pair<int, const char*> texts[] = {
      {1, "invalid value"},   {4, "deinitialized"},       {5, "obscure"},
      {100, "no device"},     {214, "ECC uncorrectable"}, {700, "obscure"},
      {719, "launch failed"}, {999, "unknown"},           {-1, "obscure"}};
  for (const auto& [code, text] : texts) EXPECT_EQ(driverText(code), text) << code;
}

}  // namespace
