#pragma once

#include <cstdint>

namespace ZelAgent {

/// How many hook calls and changes of routes a change made, and how the rules of the chip differ
/// after it.
struct ChangeCounts {
  std::uint64_t creates = 0;
  std::uint64_t updates = 0;
  std::uint64_t deletes = 0;
  std::uint64_t failures = 0;  // of the creations and updates
  /// The rules of a refused policy are added and then taken back. They do not count.
  std::uint64_t rulesAdded = 0;
  std::uint64_t rulesReplaced = 0;
  std::uint64_t rulesMoved = 0;
  std::uint64_t rulesRemoved = 0;
  std::uint64_t rulesRefused = 0;  // of the policies of interfaces whose rules do not fit
  std::uint64_t routesSet = 0;
  std::uint64_t routesRemoved = 0;

  bool operator==(const ChangeCounts&) const = default;
};

}  // namespace ZelAgent
