// Code under test without its informational lines.
#pragma once

#include "base/output/console.h"

namespace zeltest {

// The calling thread prints only what -q leaves while this lives.
class Quiet {
  zel::ConsoleSink console{false};
  zel::SinkScope scope{console};
};

}  // namespace zeltest
