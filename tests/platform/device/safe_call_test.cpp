// Failures of the vendor's runtime and driver as exceptions.
#include <gtest/gtest.h>

#include <source_location>
#include <string>

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

}  // namespace
