#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <variant>

#include "PolicyMap/AclRule.h"
#include "Velo/String.h"
#include "agent/config/IpPrefix.h"
#include "chips/interface/HookCall.h"
#include "chips/interface/Route.h"

namespace ZelAgent {

/// A change of the rules of an interface. `rule` is the rule that is added, moved or removed, or
/// the new one of a replacement.
struct RuleCall {
  enum class Kind : std::uint8_t { add, replace, move, remove };

  Kind kind = Kind::add;
  const Velo::String& intf;
  std::size_t place = 0;  // before a move
  std::size_t to = 0;     // of a move
  const PolicyMap::AclRule& rule;
  bool accepted = true;                          // moves and removals are never refused
  const PolicyMap::AclRule* replaced = nullptr;  // by an accepted replacement
};

/// A change of the route table of a hardware VRF id. `route` is null for a route that is removed.
struct RouteCall {
  std::uint32_t vrfId = 0;
  const IpPrefix& prefix;
  const Chips::Route* route = nullptr;
};

/// A call that changes the chip. References are valid while the observer runs.
using ChipCall = std::variant<Chips::HookCall, RuleCall, RouteCall>;

/// Receives each call in the order in which the chip receives them: after a hook call, and before
/// the chip forgets a rule or a route.
using ChipObserver = std::function<void(const ChipCall&)>;

}  // namespace ZelAgent
