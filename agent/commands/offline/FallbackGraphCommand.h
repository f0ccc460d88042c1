// Why: `zel-agent fallback-graph` shows who falls back to whom before a configuration is applied.
// Always: nothing is applied. The graph goes to `out`; each cycle is a warning on `err`, too.
#pragma once

#include <iosfwd>
#include <string>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

struct FallbackGraphOptions {
  std::string configuration;
  bool dot = false;
};

[[nodiscard]] ExitStatus showFallbackGraph(const FallbackGraphOptions& options, std::ostream& out,
                                           std::ostream& err);

}  // namespace ZelAgent
