#pragma once

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "agent/language/Limits.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// The limits that an option or an event changes, with the values that are in force.
struct ChangeableLimits {
  std::uint32_t chipResources = Limits::chipResources;
  std::uint32_t chipRules = Limits::chipRules;
  std::chrono::milliseconds clientTimeout = Limits::clientTimeout;
};

/// One row of the table of limits. The value itself is allowed, and one more is not.
struct Limit {
  const char* name;
  std::uint64_t value;
  const char* unit;
  const char* option;   // that changes it; empty for none
  const char* meaning;  // what is limited, and what happens beyond the limit
};

using LimitTable = std::vector<Limit>;

/// All limits: of the agent, of its chip and of the trace. Names are unique.
[[nodiscard]] LimitTable limitTable(const ChangeableLimits& inForce = {});

/// Prints a table with one row for each limit.
void writeTextReport(std::ostream& out, const LimitTable& limits);
/// An array of {name, value, unit, option, meaning}. `option` is null for none.
[[nodiscard]] OrderedJson toJson(const LimitTable& limits);

}  // namespace ZelAgent
