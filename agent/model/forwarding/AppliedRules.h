#pragma once

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "TrafficPolicy/Status.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/model/forwarding/ReachedIntfs.h"
#include "agent/model/policies/PolicyObjects.h"
#include "chips/interface/ChipAclHelper.h"

namespace ZelAgent {

/// The rules of the policies that are applied to interfaces, and the state of each on the chip.
///
/// It reads the rules from the chip and from the statuses, and keeps only where they come from: the
/// policies, and for each interface the policy of the rules that the chip holds. During a change
/// the policies are those before it. The rules of an interface that it has reached have no place.
class AppliedRules final {
 public:
  AppliedRules(Mox::Ptr<Chips::ChipAclHelper> acl, Mox::Ptr<TrafficPolicy::Status> status);

  [[nodiscard]] const PolicyObjects& policies() const noexcept { return policies_; }
  void policiesAre(PolicyObjects policies);
  /// The chip holds the rules of the policies on all interfaces but `refused`, which are in
  /// alphabetical order. These keep what they had.
  void recordInForce(const std::vector<Velo::String>& refused);

  /// The interfaces that the change in progress has reached.
  [[nodiscard]] ReachedIntfs& reached() noexcept { return reached_; }
  [[nodiscard]] bool isBeingChanged(const Velo::String& intf) const {
    return reached_.contains(intf);
  }

  /// As the functions of `ForwardingAgent` with these names.
  [[nodiscard]] RuleStates rules() const;
  [[nodiscard]] RuleStates rules(const Velo::String& intf) const;
  [[nodiscard]] RuleStates rules(const Velo::String& intf, RuleCursor& cursor,
                                 std::size_t most) const;
  [[nodiscard]] std::set<std::string> policiesInForce() const;
  [[nodiscard]] RuleCounts counts(const Velo::String& intf) const;
  /// The number of rules of applied policies that the chip does not hold.
  [[nodiscard]] std::size_t refused() const;

 private:
  [[nodiscard]] bool holdsRulesOf(const Velo::String& intf, const Velo::String& policyMap) const;
  [[nodiscard]] RuleState ruleStateOf(const Velo::String& intf, const Velo::String& policyMap,
                                      std::size_t index) const;
  [[nodiscard]] RuleStates rulesOf(const Velo::String& intf, RuleCursor& cursor,
                                   std::size_t most) const;
  [[nodiscard]] RuleStates previousRulesOf(const Velo::String& intf, RuleCursor& cursor,
                                           std::size_t most) const;

  Mox::Ptr<Chips::ChipAclHelper> acl_;
  Mox::Ptr<TrafficPolicy::Status> status_;
  PolicyObjects policies_;
  std::map<Velo::String, PolicyMapOriginPtr> inForce_;  // by interface
  ReachedIntfs reached_;
};

}  // namespace ZelAgent
