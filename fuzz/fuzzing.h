// What the fuzz targets share: one input in, a crash where a promise is broken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#include "base/errors.h"

namespace zelfuzz {

// Ends the process, which the fuzzer counts as a find, unless the promise holds.
inline void require(bool holds, const char* promise) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", promise);
  std::abort();
}

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// Runs the action; true unless it refused its input in one of the ways that the tools report. Any
// other exception goes on and is a find.
template <typename Action>
bool accepts(const Action& action) {
  try {
    action();
  } catch (const zel::AppException&) {
    return false;
  } catch (const zel::RuntimeException&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace zelfuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t*, std::size_t);
