#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <variant>

#include "agent/config/IpPrefix.h"

namespace ZelAgent {

/// vrf NAME id N: the hardware gives an existing VRF another id. 0 removes the id.
struct SetVrfId {
  std::string vrf;
  std::uint32_t id = 0;

  bool operator==(const SetVrfId&) const = default;
};

/// vrf NAME remove: the hardware no longer knows the VRF.
struct RemoveVrf {
  std::string vrf;

  bool operator==(const RemoveVrf&) const = default;
};

/// vrf NAME add [id N]: the hardware reports the VRF by a new status, which replaces any other.
struct AddVrf {
  std::string vrf;
  std::uint32_t id = 0;

  bool operator==(const AddVrf&) const = default;
};

/// fallback NAME to NAME
struct SetFallback {
  std::string vrf;
  std::string fallback;

  bool operator==(const SetFallback&) const = default;
};

/// fallback NAME remove
struct RemoveFallback {
  std::string vrf;

  bool operator==(const RemoveFallback&) const = default;
};

/// decap-nh on|off
struct SetDecapNh {
  bool isOn = false;

  bool operator==(const SetDecapNh&) const = default;
};

/// decap-nh-fallback on|off
struct SetDecapNhFallback {
  bool isOn = false;

  bool operator==(const SetDecapNhFallback&) const = default;
};

/// prefix-lens ipv4|ipv6 NAME LENGTH...: only these are in exact match.
struct SetPrefixLens {
  IpFamily family = IpFamily::v4;
  std::string vrf;
  std::set<std::uint8_t> lengths;

  bool operator==(const SetPrefixLens&) const = default;
};

/// prefix-lens ipv4|ipv6 NAME remove
struct RemovePrefixLens {
  IpFamily family = IpFamily::v4;
  std::string vrf;

  bool operator==(const RemovePrefixLens&) const = default;
};

/// config FILE: the configuration is applied as a change of the one before.
struct ApplyConfig {
  std::string file;

  bool operator==(const ApplyConfig&) const = default;
};

/// chip capacity N
struct SetChipCapacity {
  std::uint32_t capacity = 0;

  bool operator==(const SetChipCapacity&) const = default;
};

/// chip rules N: the number of rule entries of the chip. Refused rules are asked for again.
struct SetChipRules {
  std::uint32_t capacity = 0;

  bool operator==(const SetChipRules&) const = default;
};

/// chip fail VRF|any COUNT: the next COUNT creations or updates of actions into the VRF fail.
struct PlanChipFaults {
  std::optional<std::string> vrf;  // none: those of any action
  std::uint32_t count = 0;

  bool operator==(const PlanChipFaults&) const = default;
};

/// route VRF PREFIX decap: packets to the prefix are decapsulated. The route hides a configured one
/// to the same prefix.
struct SetDecapRoute {
  std::string vrf;
  IpPrefix prefix;

  bool operator==(const SetDecapRoute&) const = default;
};

/// route VRF PREFIX via INTERFACE: packets to the prefix leave by the interface. The route hides a
/// configured one to the same prefix.
struct SetEgressRoute {
  std::string vrf;
  IpPrefix prefix;
  std::string interface;

  bool operator==(const SetEgressRoute&) const = default;
};

/// route VRF PREFIX remove: the route that an event has set is removed.
struct RemoveRoute {
  std::string vrf;
  IpPrefix prefix;

  bool operator==(const RemoveRoute&) const = default;
};

/// retry: the chip is asked again for every action and rule that it has refused.
struct Retry {
  bool operator==(const Retry&) const = default;
};

/// show
struct Show {
  bool operator==(const Show&) const = default;
};

/// A change of an agent that is not a new configuration: the hardware reports a VRF, a fallback
/// changes, a chip has no room. An event file has one event a line.
///
/// Events are plain values. VRF names have 1 to 100 bytes. Prefix lengths are valid for the family.
using Event = std::variant<SetVrfId, RemoveVrf, AddVrf, SetFallback, RemoveFallback, SetDecapNh,
                           SetDecapNhFallback, SetPrefixLens, RemovePrefixLens, ApplyConfig,
                           SetChipCapacity, SetChipRules, PlanChipFaults, SetDecapRoute,
                           SetEgressRoute, RemoveRoute, Retry, Show>;

/// The event as a line of an event file. Reading the line returns an equal event.
[[nodiscard]] std::string toText(const Event& event);

/// The word for the next operations of any VRF. A VRF of this name is quoted.
inline constexpr const char* anyVrfWord = "any";

}  // namespace ZelAgent
