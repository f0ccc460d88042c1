#include "agent/model/policies/UserCountingAclHelper.h"

#include <optional>
#include <utility>

#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {
namespace {

using ZelVrfSelectionPolicy::VrfHwConfig;

// A user that is counted before its rule is programmed. The destructor takes it back, unless the
// user stays. No exception leaves the destructor: the failure of the call is the one to report.
class NewUser {
 public:
  NewUser(VrfHwConfig& users, std::optional<VrfAction> action)
      : users_(users), action_(std::move(action)) {
    if (action_) users_.vrfRefCountInc(*action_, 1);
  }
  NewUser(const NewUser&) = delete;
  NewUser& operator=(const NewUser&) = delete;
  ~NewUser() {
    try {
      if (action_) users_.vrfRefCountDec(*action_, 1);
    } catch (...) {  // NOLINT(bugprone-empty-catch): the count is already as before
    }
  }

  void stays() noexcept { action_.reset(); }

 private:
  VrfHwConfig& users_;
  std::optional<VrfAction> action_;
};

}  // namespace

UserCountingAclHelper::UserCountingAclHelper(const Velo::String& name,
                                             Mox::Ptr<PolicyMapAclHelper> hardware,
                                             Mox::Ptr<ZelVrfSelectionPolicy::VrfHwConfig> users)
    : PassingAclHelper(name, std::move(hardware)), users_(std::move(users)) {}

PolicyMap::AclResult UserCountingAclHelper::addRule(const Velo::String& intf, std::size_t place,
                                                    const PolicyMap::AclRule& rule) {
  NewUser user(*users_, vrfActionOf(rule.action));
  PolicyMap::AclResult result = PassingAclHelper::addRule(intf, place, rule);
  if (result.accepted) user.stays();
  return result;
}

void UserCountingAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  const auto action = vrfActionOf(rules(intf)[place].action);
  PassingAclHelper::removeRule(intf, place);
  if (action) users_->vrfRefCountDec(*action, 1);
}

PolicyMap::AclResult UserCountingAclHelper::replaceRule(const Velo::String& intf, std::size_t place,
                                                        const PolicyMap::AclRule& rule) {
  const auto old = vrfActionOf(rules(intf)[place].action);
  NewUser user(*users_, vrfActionOf(rule.action));
  PolicyMap::AclResult result = PassingAclHelper::replaceRule(intf, place, rule);
  if (!result.accepted) return result;
  user.stays();
  if (old) users_->vrfRefCountDec(*old, 1);
  return result;
}

}  // namespace ZelAgent
