#include "agent/model/calls/PassingAclHelper.h"

#include <utility>

namespace ZelAgent {

using PolicyMap::AclResult;
using PolicyMap::AclRule;

PassingAclHelper::PassingAclHelper(const Velo::String& name, Mox::Ptr<PolicyMapAclHelper> hardware)
    : PolicyMapAclHelper(name), hardware_(std::move(hardware)) {}

AclResult PassingAclHelper::addRule(const Velo::String& intf, std::size_t place,
                                    const AclRule& rule) {
  return hardware_->addRule(intf, place, rule);
}

void PassingAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  hardware_->removeRule(intf, place);
}

void PassingAclHelper::moveRule(const Velo::String& intf, std::size_t from, std::size_t to) {
  hardware_->moveRule(intf, from, to);
}

AclResult PassingAclHelper::replaceRule(const Velo::String& intf, std::size_t place,
                                        const AclRule& rule) {
  return hardware_->replaceRule(intf, place, rule);
}

void PassingAclHelper::intfClosedIs(const Velo::String& intf, bool closed) {
  hardware_->intfClosedIs(intf, closed);
}

bool PassingAclHelper::intfClosed(const Velo::String& intf) const {
  return hardware_->intfClosed(intf);
}

const PolicyMap::PolicyMapAclHelper::Rules& PassingAclHelper::rules(
    const Velo::String& intf) const {
  return hardware_->rules(intf);
}

std::vector<Velo::String> PassingAclHelper::intfs() const {
  return hardware_->intfs();
}

}  // namespace ZelAgent
