// What the entry point relies on: the report of failures and the choice of platform.
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include "base/errors.h"
#include "base/output/console.h"
#include "platform/host/host_machine.h"
#include "support/quiet.h"
#include "tools/platform_choice.h"
#include "tools/run_guarded.h"

namespace {

struct Outcome {
  int status;
  std::string output;
  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* stream) {
  *stream << outcome.status << ' ' << testing::PrintToString(outcome.output);
}

template <typename Thrown>
Outcome guardedThrow(const Thrown& thrown) {
  testing::internal::CaptureStdout();
  const int status = zelsvm_main::runGuarded([&] { throw thrown; });
  return {status, testing::internal::GetCapturedStdout()};
}

TEST(RunGuarded, StatusAndReport) {
  EXPECT_EQ(zelsvm_main::runGuarded([] {}), 0);
  EXPECT_EQ(guardedThrow(zel::AppException("A sentence.")), (Outcome{1, "A sentence.\n"}));
  EXPECT_EQ(guardedThrow(zel::AppException("100%s %n")), (Outcome{1, "100%s %n\n"}));
  EXPECT_EQ(guardedThrow(zel::RuntimeException("text", "file", 3)),
            (Outcome{1, "file(3): text\n\n"}));
  EXPECT_EQ(guardedThrow(std::runtime_error("own")), (Outcome{1, "own\n"}));
  EXPECT_EQ(guardedThrow(std::runtime_error("")), (Outcome{1, "Unknown exception\n"}));
  EXPECT_EQ(guardedThrow(std::bad_alloc()), (Outcome{1, "std::bad_alloc\n"}));
  EXPECT_EQ(guardedThrow(42), (Outcome{1, "Unknown error\n"}));
  EXPECT_EQ(guardedThrow(zel::OutputClosed{}), (Outcome{1, ""}));
}

TEST(PlatformChoice, HostUnlessToldOtherwise) {
  for (const char* const wanted : {static_cast<const char*>(nullptr), "", "host"})
    EXPECT_EQ(&zelsvm_main::choosePlatform(wanted, {})(0), &zelsvm::hostMachine());
}

TEST(PlatformChoice, RefusalsSayWhy) {
  const auto refusal = [](const char* wanted) -> std::string {
    try {
      zelsvm_main::choosePlatform(wanted, {});
    } catch (const zel::AppException& error) {
      return error.what();
    }
    return "no refusal";
  };
  EXPECT_EQ(refusal("cuda"), "The CUDA engine is not part of this installation.");
  for (const char* const wanted : {"HOST", "host ", "gpu"})
    EXPECT_EQ(refusal(wanted),
              std::string("ZELSVM_PLATFORM must be host or cuda, not ") + wanted + ".");
}

}  // namespace
