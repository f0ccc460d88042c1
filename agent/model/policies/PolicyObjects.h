#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Classification/FieldSetConfig.h"
#include "PolicyMap/AclMatch.h"
#include "PolicyMap/ClassMapTypeConfig.h"
#include "PolicyMap/ClassMatch.h"
#include "PolicyMap/IntfConfig.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "agent/config/Configuration.h"

namespace ZelAgent {

/// What a rule matches, on one line. Two matches have the same text exactly if they are equal:
/// "ipv4 protocol 4 dscp 10,12 source 198.18.0.1/32 destination 203.0.113.0/24", "any",
/// "ipv6 source-set pods hop-limit 1 length 100", "ipv4 fragment fragment-offset 1..8191",
/// "ipv4 protocol 6 destination-port 80,1000..2000 tcp-flags syn+!ack,rst".
///
/// Values with commas between them are alternatives. In an alternative of TCP flags "+" is between
/// flags that must be as written together, "!" is before a flag that must be clear, and "any" is no
/// such flag.
[[nodiscard]] std::string toText(const PolicyMap::ClassMatch& match);
/// The same of a match on the chip, with the prefixes of a set in place of its name:
/// "ipv4 source-set 10.0.0.0/8,!10.1.0.0/16".
[[nodiscard]] std::string toText(const PolicyMap::AclMatch& match);

/// The same with at most `Limits::shownListValues` values of a list, and the number of the others:
/// "ipv4 protocol 6 source-port 1,3,5,... and 200 more".
[[nodiscard]] std::string shownText(const PolicyMap::ClassMatch& match);
[[nodiscard]] std::string shownText(const PolicyMap::AclMatch& match);

/// Where the rules of a policy map come from: one or two policies of a network instance.
struct PolicyMapOrigin {
  struct Rule {
    std::size_t policy = 0;      // index of its policy
    std::uint32_t sequence = 0;  // in its policy
    std::uint32_t number = 0;    // its sequence in the policy map
    PolicyMap::SharedClassMatch match;
  };

  std::string networkInstance;
  std::vector<std::string> policyIds;  // in the order in which they are tried
  std::vector<Rule> rules;             // those of the policy map

  [[nodiscard]] const std::string& policyOf(const Rule& rule) const {
    return policyIds[rule.policy];
  }
};
using PolicyMapOriginPtr = std::shared_ptr<const PolicyMapOrigin>;

/// The policies of a configuration in the platform's form: prefix sets, class maps, policy maps,
/// and what is applied to which interface.
///
/// The name of a class map is the text of its match, so a class map never changes. Policies with
/// the same id in two network instances are two policy maps. Two policies that are applied to one
/// interface are one more policy map: the rules of the VRF selection policy, then those of the
/// forwarding policy, numbered from 1. Interfaces without a policy are absent.
struct PolicyObjects {
  std::map<Classification::PrefixSetName, Classification::SharedPrefixSet> prefixSets;
  std::map<Velo::String, PolicyMap::SharedClassMatch> classMaps;
  std::map<Velo::String, PolicyMap::PolicyMapRules> policyMaps;
  std::map<Velo::String, PolicyMap::IntfPolicy> intfs;
  std::map<Velo::String, PolicyMapOriginPtr> origins;  // by policy map
};

[[nodiscard]] PolicyObjects policyObjectsOf(const Configuration& configuration);

}  // namespace ZelAgent
