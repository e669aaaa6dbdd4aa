// What code under test warns of.
#pragma once

#include <string>
#include <vector>

#include "base/output/console.h"

namespace zeltest {

// Keeps the calling thread's warnings while it lives; its messages are lost.
class WarningLog : public zel::MessageSink {
 public:
  WarningLog() : MessageSink(false) {}

  void write(std::string_view /*text*/) override {}
  void warn(std::string_view sentence) override { sentences.emplace_back(sentence); }

  std::vector<std::string> sentences;

 private:
  zel::SinkScope scope{*this};
};

}  // namespace zeltest
