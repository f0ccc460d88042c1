// Why: a user of a VRF action is a rule that the classification hardware holds, so whoever hands
// rules to the hardware counts the users.
// Always: the count of an action is raised after the hardware has taken a rule with it, and lowered
// after such a rule is gone; so counts and rules agree whenever no call is under way.
#pragma once

#include "PolicyMap/PolicyMapAclHelper.h"
#include "ZelVrfSelectionPolicy/tables/VrfHwConfig.h"

namespace ZelAgent {

class UserCountingAclHelper final : public PolicyMap::PolicyMapAclHelper {
 public:
  // The hardware behind `hardware`, whose users are counted in `users`.
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
