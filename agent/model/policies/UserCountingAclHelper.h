#pragma once

#include "PolicyMap/PolicyMapAclHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

namespace ZelAgent {

/// Counts the users of VRF actions: the rules that the classification hardware holds.
///
/// The count of an action goes up after the hardware has accepted a rule with it, and down after
/// such a rule has been removed. Counts and rules agree whenever no call is under way.
class UserCountingAclHelper final : public PolicyMap::PolicyMapAclHelper {
 public:
  /// Passes every call on to `hardware`, and counts in `users`.
  UserCountingAclHelper(const Velo::String& name, Mox::Ptr<PolicyMapAclHelper> hardware,
                        Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users);

  [[nodiscard]] PolicyMap::AclResult addRule(const Velo::String& intf, std::size_t place,
                                             const PolicyMap::AclRule& rule) override;
  void removeRule(const Velo::String& intf, std::size_t place) override;
  void moveRule(const Velo::String& intf, std::size_t from, std::size_t to) override;
  [[nodiscard]] const Rules& rules(const Velo::String& intf) const override;
  [[nodiscard]] std::vector<Velo::String> intfs() const override;

 private:
  Mox::Ptr<PolicyMapAclHelper> hardware_;
  Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users_;
};

}  // namespace ZelAgent
