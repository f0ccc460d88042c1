// Why: the agent decides what to do from plain values, whatever language a configuration was
// written in.
// Always: names of network instances are the system's VRF names ("default" for the default
// instance); names are not empty and at most 100 bytes; keys are unique; rules are in the order in
// which they are tried; a binding names a policy of its own instance.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "agent/config/IpPrefix.h"

namespace ZelAgent {

// The system's name of the default VRF, and the name that configurations give it.
inline constexpr const char* defaultVrfName = "default";
inline constexpr const char* defaultInstanceName = "DEFAULT";

enum class InstanceType : std::uint8_t { defaultInstance, l3Vrf };

// One way for packets of a static route. Neither dropping nor given an interface, it is resolved
// by looking its address up in the same VRF.
struct NextHop {
  std::string index;
  std::optional<IpAddress> address;
  std::string interface;  // empty where none is given
  bool drops = false;

  bool operator==(const NextHop&) const = default;
};

struct StaticRoute {
  IpPrefix prefix;
  std::vector<NextHop> nextHops;

  bool operator==(const StaticRoute&) const = default;
};

// What a packet's outer header must be for a rule to match. An absent field is a wildcard; without
// a family the rule matches every packet.
struct RuleMatch {
  std::optional<IpFamily> family;
  std::optional<std::uint8_t> protocol;
  std::optional<std::uint8_t> dscp;
  std::vector<std::uint8_t> dscpSet;  // one of them matches; empty is a wildcard
  std::optional<IpPrefix> source;
  std::optional<IpPrefix> destination;

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

struct Policy {
  std::string policyId;
  std::vector<Rule> rules;

  bool operator==(const Policy&) const = default;
};

struct PolicyBinding {
  std::string interface;
  std::string policyId;  // empty where no policy is applied

  bool operator==(const PolicyBinding&) const = default;
};

struct NetworkInstance {
  std::string name;
  InstanceType type = InstanceType::l3Vrf;
  std::string fallback;  // empty where none is configured
  std::vector<std::string> interfaces;
  std::vector<StaticRoute> staticRoutes;
  std::vector<Policy> policies;
  std::vector<PolicyBinding> policyBindings;

  bool operator==(const NetworkInstance&) const = default;
};

struct Configuration {
  std::vector<NetworkInstance> networkInstances;

  bool operator==(const Configuration&) const = default;
};

}  // namespace ZelAgent
