// Checks of what holds for every input. A check that fails prints what should hold, and aborts, so
// the fuzzer reports the input as a finding.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {

[[noreturn]] inline void fail(const std::string& what) {
  std::fprintf(stderr, "does not hold: %s\n", what.c_str());
  std::abort();
}

inline void must(bool holds, const char* what) {
  if (!holds) fail(what);
}

inline void must(bool holds, const std::string& what) = delete;  // costs time even if it holds

}  // namespace Fuzz
