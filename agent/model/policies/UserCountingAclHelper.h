#pragma once

#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"
#include "agent/model/calls/PassingAclHelper.h"

namespace ZelAgent {

/// Counts the users of VRF actions: the rules that the classification hardware holds.
///
/// A rule is on the hardware only while its action is counted, so the action's resource exists
/// before a packet can match the rule. The count goes up before the hardware gets the rule, and
/// down again if the hardware refuses it or the call throws. When a rule leaves, the count goes
/// down after the hardware has removed it. A replaced rule does both, in this order. Counts and
/// rules agree whenever no call is under way.
class UserCountingAclHelper final : public PassingAclHelper {
 public:
  /// Passes every call on to `hardware`, and counts in `users`.
  UserCountingAclHelper(const Velo::String& name, Mox::Ptr<PolicyMapAclHelper> hardware,
                        Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users);

  [[nodiscard]] PolicyMap::AclResult addRule(const Velo::String& intf, std::size_t place,
                                             const PolicyMap::AclRule& rule) override;
  void removeRule(const Velo::String& intf, std::size_t place) override;
  [[nodiscard]] PolicyMap::AclResult replaceRule(const Velo::String& intf, std::size_t place,
                                                 const PolicyMap::AclRule& rule) override;

 private:
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_;
};

}  // namespace ZelAgent
