#include "PolicyMap/PolicyMapTypeConfig.h"

#include <algorithm>
#include <utility>

#include "Mox/Exceptions.h"
#include "Mox/Ptr.h"
#include "Mox/QuotedString.h"

namespace PolicyMap {

Mox::Ptr<PolicyMapTypeConfig> PolicyMapTypeConfig::PolicyMapTypeConfigIs(const Velo::String& name) {
  return Mox::makeActivePtr<PolicyMapTypeConfig>(name);
}

void PolicyMapTypeConfig::policyMapIs(const Velo::String& name, PolicyMapRules rules) {
  const auto wrong = std::adjacent_find(
      rules.begin(), rules.end(),
      [](const PolicyMapRule& a, const PolicyMapRule& b) { return a.sequence >= b.sequence; });
  if (wrong != rules.end()) {
    throw Mox::RangeException("policy map " + Mox::quoted(name.bytes()) + ": rule " +
                              std::to_string(wrong->sequence) +
                              " is followed by one whose sequence is not higher");
  }
  policyMap_.is(name, std::move(rules));
}

}  // namespace PolicyMap
