// Failures of the vendor's runtime and driver as exceptions.
#include <gtest/gtest.h>

#include <source_location>
#include <string>
#include <utility>

#include "base/errors.h"
#include "platform/cuda/runtime/device.h"
#include "support/temp_file.h"
#include "text_match.h"

namespace {

using zel::RuntimeException;

TEST(SafeCall, NamesThePlaceOfTheCall) {
  const auto here = std::source_location::current();
  const std::string text =
      zeltest::failureOf<RuntimeException>([] { zel::zelSafeCall(cudaErrorInvalidDevice); });
  EXPECT_EQ(text, zel::sourceName(here) + "(" + std::to_string(here.line() + 2) +
                      "): zelSafeCall: CUDA runtime error - invalid device ordinal.\n");
}

TEST(SafeCall, DriverErrorsNameTheCheckFirst) {
  const auto here = std::source_location::current();
  const std::string text = zeltest::failureOf<RuntimeException>(
      [] { zel::zelSafeDriverCall(static_cast<CUresult>(2)); });
  const std::string inner = zel::sourceName(here) + "(" + std::to_string(here.line() + 2) +
                            "): CUDA driver error - out of memory\n\n";
  EXPECT_TRUE(text.ends_with(inner)) << text;
  EXPECT_TRUE(zeltest::matches(text.substr(0, text.size() - inner.size()),
                               "platform/cuda/runtime/device\\([0-9]+\\): "))
      << text;
}

TEST(SafeCall, DriverTexts) {
  const auto driverText = [](int code) {
    const std::string text = zeltest::failureOf<RuntimeException>(
        [&] { zel::zelSafeDriverCall(static_cast<CUresult>(code)); });
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
