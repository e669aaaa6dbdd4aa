// What code under test prints.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace zeltest {

// Standard output goes here while this lives.
class CapturedOutput {
 public:
  CapturedOutput() { testing::internal::CaptureStdout(); }
  ~CapturedOutput() {
    if (!ended) testing::internal::GetCapturedStdout();
  }
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  // Ends the capture.
  std::string text() {
    ended = true;
    return testing::internal::GetCapturedStdout();
  }

 private:
  bool ended = false;
};

}  // namespace zeltest
