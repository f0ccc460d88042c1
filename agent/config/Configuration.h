#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "PolicyMap/NumberRange.h"
#include "PolicyMap/TcpFlagsMatch.h"
#include "agent/config/IpPrefix.h"

namespace ZelAgent {

/// The name of the default VRF. A configuration may also call it `defaultInstanceName`.
inline constexpr const char* defaultVrfName = "default";
inline constexpr const char* defaultInstanceName = "DEFAULT";

enum class InstanceType : std::uint8_t { defaultInstance, l3Vrf };

/// One next hop of a static route. If it neither drops nor has an interface, its address is looked
/// up in the same VRF.
struct NextHop {
  std::string index;
  std::optional<IpAddress> address;
  std::string interface;  // Empty if none is given.
  bool drops = false;

  bool operator==(const NextHop&) const = default;
};

struct StaticRoute {
  IpPrefix prefix;
  std::vector<NextHop> nextHops;

  bool operator==(const StaticRoute&) const = default;
};

/// What a packet's outer header must have for a rule to match. An absent field is a wildcard. A
/// rule without a family matches every packet.
struct RuleMatch {
  std::optional<IpFamily> family;
  std::optional<std::uint8_t> protocol;
  std::optional<std::uint8_t> dscp;
  std::vector<std::uint8_t> dscpSet;  // One of them matches. Empty is a wildcard.
  std::optional<IpPrefix> source;
  std::optional<IpPrefix> destination;
  /// The names of prefix sets of the family. Empty is a wildcard. A packet matches such a set and
  /// the prefix above.
  std::string sourceSet{};
  std::string destinationSet{};
  std::optional<std::uint8_t> hopLimit{};
  /// The length of the packet with its IP header.
  std::optional<std::uint16_t> length{};
  /// Each list: one of its members matches. Empty is a wildcard.
  std::vector<PolicyMap::NumberRange> fragmentOffsets{};  // in units of eight bytes
  std::vector<PolicyMap::NumberRange> sourcePorts{};
  std::vector<PolicyMap::NumberRange> destinationPorts{};
  std::vector<PolicyMap::TcpFlagsMatch> tcpFlags{};
  /// Whether only fragments match, the first one included.
  bool isFragment = false;

  bool operator==(const RuleMatch&) const = default;
};

struct NoAction {
  bool operator==(const NoAction&) const = default;
};

struct Discard {
  bool operator==(const Discard&) const = default;
};

struct LookUp {
  std::string vrf;

  bool operator==(const LookUp&) const = default;
};

struct Decapsulate {
  std::string decapVrf;
  std::string fallbackVrf;
  std::string postDecapVrf;

  bool operator==(const Decapsulate&) const = default;
};

using RuleAction = std::variant<NoAction, Discard, LookUp, Decapsulate>;

struct Rule {
  std::uint32_t sequenceId = 0;
  RuleMatch match;
  RuleAction action;

  bool operator==(const Rule&) const = default;
};

/// By which leaf an interface names a policy.
enum class PolicyType : std::uint8_t {
  vrfSelection,  // apply-vrf-selection-policy
  forwarding,    // apply-forwarding-policy
};

struct Policy {
  std::string policyId;
  std::vector<Rule> rules;
  PolicyType type = PolicyType::vrfSelection;

  bool operator==(const Policy&) const = default;
};

/// The policies of an interface. A packet that the VRF selection policy does not match is compared
/// with the rules of the forwarding policy.
struct PolicyBinding {
  std::string interface;
  std::string policyId;              // Empty if no VRF selection policy is applied.
  std::string forwardingPolicyId{};  // Empty if no forwarding policy is applied.

  bool operator==(const PolicyBinding&) const = default;
};

struct NetworkInstance {
  std::string name;
  InstanceType type = InstanceType::l3Vrf;
  std::string fallback;  // Empty if none is configured.
  std::vector<std::string> interfaces;
  std::vector<StaticRoute> staticRoutes;
  std::vector<Policy> policies;
  std::vector<PolicyBinding> policyBindings;

  bool operator==(const NetworkInstance&) const = default;
};

/// A named set of addresses: those in one of `prefixes` and in none of `excluded`.
struct PrefixSet {
  std::string name;
  IpFamily family = IpFamily::v4;
  std::vector<IpPrefix> prefixes;
  std::vector<IpPrefix> excluded;

  bool operator==(const PrefixSet&) const = default;
};

/// A configuration as plain values, independent of the language that it was written in.
///
/// Names of network instances are the system's VRF names ("default" for the default instance).
/// Names have 1 to 100 bytes. Keys are unique. Rules are in the order in which they are tried. A
/// binding names policies of its own network instance. A rule names prefix sets of the
/// configuration. Prefix sets are unique by family and name.
struct Configuration {
  std::vector<NetworkInstance> networkInstances;
  std::vector<PrefixSet> prefixSets{};
  /// The name that the document gives to the default instance. Empty for a usual name.
  std::string defaultName{};
  /// Interfaces that are named but not used: those of the system, and those of entries that are not
  /// enabled. One that no network instance uses either is in the default VRF, without policies.
  std::set<std::string> otherInterfaces{};

  bool operator==(const Configuration&) const = default;
};

/// The VRF that a name stands for: "default" for DEFAULT and for `defaultName`, the name that the
/// document gives to the default instance. Otherwise the name itself.
[[nodiscard]] std::string vrfNamed(const std::string& name, const std::string& defaultName);

}  // namespace ZelAgent
