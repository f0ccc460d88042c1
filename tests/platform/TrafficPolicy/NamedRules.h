#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "PolicyMap/AclRule.h"

namespace TrafficPolicy {

using Rules = std::vector<PolicyMap::AclRule>;

/// A rule that is told from others by its name alone.
[[nodiscard]] inline PolicyMap::AclRule ruleNamed(const std::string& name) {
  return {{}, {PolicyMap::ActionType::vrf, L3::VrfName(name), {}, {}}};
}

/// A rule for each letter.
[[nodiscard]] inline Rules rulesNamed(std::string_view letters) {
  Rules rules;
  for (const char letter : letters)
    rules.push_back(ruleNamed(std::string(1, letter)));
  return rules;
}

/// The letters of such rules, or their whole names.
[[nodiscard]] inline std::string namesOf(const Rules& rules) {
  std::string names;
  for (const PolicyMap::AclRule& rule : rules)
    names += rule.action.vrfName.bytes();
  return names;
}

}  // namespace TrafficPolicy
