// What happens to an agent, as plain values.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "agent/model/events/Event.h"
#include "tests/agent/features/RandomWorld.h"
#include "tests/agent/model/fresh/VisibleState.h"

namespace ZelAgent {

// The file of the daemon has this content, and is read again.
struct Reload {
  std::string document;
};
// The event `config FILE` with a file of this content.
struct Configure {
  std::string document;
};
// The chip has room for this number of rules.
struct SetRuleCapacity {
  std::uint32_t rules = 0;
};
// The chip has room for everything and no planned fault. It is asked again for all that it has
// refused. Then the configuration is applied again.
struct Recover {};

using Step = std::variant<Event, Reload, Configure, SetRuleCapacity, Recover>;

struct History {
  std::string start;  // the first document, which is right
  std::vector<Step> steps;
  Probes probes;
};

inline constexpr std::uint32_t roomyChip = 1000;
inline constexpr std::uint32_t roomForRules = 10000;

// The events by which the agent recovers: room, no planned faults, and `retry`.
[[nodiscard]] std::vector<Event> recoveringEvents();

// A history. About half of the histories have no event by which the chip refuses something that a
// fresh chip accepts, so that the whole state of the agent can be compared after each step.
[[nodiscard]] History randomHistory(RandomChoices& choices);

// The history as event lines and documents. Reloads are written as `config FILE`.
[[nodiscard]] std::string textOf(const History& history);

}  // namespace ZelAgent
