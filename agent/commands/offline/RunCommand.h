// Why: `zel-agent run` shows what a series of configurations, and then of events, does to the chip.
// Always: every configuration and every event that was applied is reported on `out`, then its
// effects are removed and the emptied agent is reported too, also when a later one turns out bad. A
// bad one is one line on `err` and ends the series.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "agent/language/ExitStatus.h"

namespace ZelAgent {

struct RunOptions {
  std::vector<std::string> configurations;
  std::optional<std::string> events;  // a file
  bool json = false;
  bool strict = false;
  std::uint32_t chipCapacity = 1024;
};

[[nodiscard]] ExitStatus runConfigurations(const RunOptions& options, std::ostream& out,
                                           std::ostream& err);

}  // namespace ZelAgent
