// Why: `zel-agent run` shows what a series of configurations does to the chip.
// Always: every configuration that was applied is reported on `out`, then its effects are removed
// and the emptied agent is reported too, also when a later configuration turns out bad. A bad one
// is one line on `err` and ends the series.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "agent/commands/ExitStatus.h"

namespace ZelAgent {

struct RunOptions {
  std::vector<std::string> configurations;
  bool json = false;
  bool strict = false;
  std::uint32_t chipCapacity = 1024;
};

[[nodiscard]] ExitStatus runConfigurations(const RunOptions& options, std::ostream& out,
                                           std::ostream& err);

}  // namespace ZelAgent
