#include "agent/model/policies/UserCountingAclHelper.h"

#include <utility>

#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

UserCountingAclHelper::UserCountingAclHelper(const Velo::String& name,
                                             Mox::Ptr<PolicyMapAclHelper> hardware,
                                             Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users)
    : PolicyMapAclHelper(name), hardware_(std::move(hardware)), users_(std::move(users)) {}

PolicyMap::AclResult UserCountingAclHelper::addRule(const Velo::String& intf, std::size_t place,
                                                    const PolicyMap::AclRule& rule) {
  PolicyMap::AclResult result = hardware_->addRule(intf, place, rule);
  const auto action = vrfActionOf(rule.action);
  if (result.accepted && action) users_->vrfRefCountInc(*action, 1);
  return result;
}

void UserCountingAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  const auto action = vrfActionOf(rules(intf)[place].action);
  hardware_->removeRule(intf, place);
  if (action) users_->vrfRefCountDec(*action, 1);
}

void UserCountingAclHelper::moveRule(const Velo::String& intf, std::size_t from, std::size_t to) {
  hardware_->moveRule(intf, from, to);
}

const PolicyMap::PolicyMapAclHelper::Rules& UserCountingAclHelper::rules(
    const Velo::String& intf) const {
  return hardware_->rules(intf);
}

std::vector<Velo::String> UserCountingAclHelper::intfs() const {
  return hardware_->intfs();
}

}  // namespace ZelAgent
