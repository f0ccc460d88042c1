#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "agent/config/Configuration.h"
#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

/// A value in two configurations. `before` is absent if it was added, `after` if it was removed.
template <class Value>
struct Difference {
  std::optional<Value> before;
  std::optional<Value> after;

  bool operator==(const Difference&) const = default;
};

template <class Key, class Value>
using Differences = std::map<Key, Difference<Value>>;

/// A policy is unique by its network instance and its id.
struct PolicyName {
  std::string networkInstance;
  std::string policyId;

  auto operator<=>(const PolicyName&) const = default;  // NOLINT(modernize-use-nullptr): misread
};

struct InterfaceSettings {
  std::string vrf;
  std::optional<PolicyName> vrfSelectionPolicy;
  std::optional<PolicyName> forwardingPolicy;

  bool operator==(const InterfaceSettings&) const = default;
};

struct AddressSet {
  std::vector<IpPrefix> prefixes;
  std::vector<IpPrefix> excluded;

  bool operator==(const AddressSet&) const = default;
};

/// The differences of the rules of one policy.
///
/// A rule that has the same match and action under another sequence id has moved. Of the other
/// rules, those with equal sequence ids have changed.
struct PolicyDifference {
  std::vector<std::string> interfaces;  // after, or before if the policy was removed
  std::vector<Difference<Rule>> rules;  // by sequence id
};

/// What differs from one configuration to another. The order of entries of a file is no difference,
/// nor is an index of a next hop.
///
/// It takes memory and time in proportion to the two configurations: the rules of a policy are
/// compared once, however many interfaces use it.
struct ConfigurationDifference {
  using PrefixSetName = std::pair<IpFamily, std::string>;
  using RouteName = std::pair<std::string, IpPrefix>;  // VRF and prefix

  Differences<std::string, std::monostate> instances;
  Differences<std::string, std::string> fallbacks;  // by VRF
  Differences<std::string, InterfaceSettings> interfaces;
  Differences<RouteName, std::vector<NextHop>> routes;
  Differences<PrefixSetName, AddressSet> prefixSets;
  Differences<PolicyName, PolicyType> policies;
  std::map<PolicyName, PolicyDifference> rules;  // of policies whose rules differ
  Differences<VrfAction, std::size_t> actions;   // the number of users of each

  [[nodiscard]] bool isEmpty() const noexcept;
};

[[nodiscard]] ConfigurationDifference differenceOf(const Configuration& before,
                                                   const Configuration& after);

}  // namespace ZelAgent
