// Why: what has to hold of every input is told in words when it does not, and ends the run as a
// finding of a sanitizer does.
// Always: returns only when it holds.
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

inline void must(bool holds, const std::string& what) = delete;  // costs where it holds

}  // namespace Fuzz
