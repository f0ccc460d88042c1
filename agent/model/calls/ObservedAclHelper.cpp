#include "agent/model/calls/ObservedAclHelper.h"

#include <utility>

namespace ZelAgent {

using PolicyMap::AclResult;
using PolicyMap::AclRule;

ObservedAclHelper::ObservedAclHelper(const Velo::String& name,
                                     Mox::Ptr<PolicyMapAclHelper> hardware,
                                     const ChipObserver& observer)
    : PolicyMapAclHelper(name), hardware_(std::move(hardware)), observer_(observer) {}

AclResult ObservedAclHelper::addRule(const Velo::String& intf, std::size_t place,
                                     const AclRule& rule) {
  AclResult result = hardware_->addRule(intf, place, rule);
  if (observer_) observer_(RuleCall{RuleCall::Kind::add, intf, place, 0, rule, result.accepted});
  return result;
}

void ObservedAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  if (observer_) observer_(RuleCall{RuleCall::Kind::remove, intf, place, 0, rules(intf)[place]});
  hardware_->removeRule(intf, place);
}

void ObservedAclHelper::moveRule(const Velo::String& intf, std::size_t from, std::size_t to) {
  if (observer_) observer_(RuleCall{RuleCall::Kind::move, intf, from, to, rules(intf)[from]});
  hardware_->moveRule(intf, from, to);
}

AclResult ObservedAclHelper::replaceRule(const Velo::String& intf, std::size_t place,
                                         const AclRule& rule) {
  AclResult result = hardware_->replaceRule(intf, place, rule);
  if (observer_) {
    observer_(RuleCall{RuleCall::Kind::replace, intf, place, 0, rule, result.accepted});
  }
  return result;
}

void ObservedAclHelper::intfClosedIs(const Velo::String& intf, bool closed) {
  hardware_->intfClosedIs(intf, closed);
}

bool ObservedAclHelper::intfClosed(const Velo::String& intf) const {
  return hardware_->intfClosed(intf);
}

const PolicyMap::PolicyMapAclHelper::Rules& ObservedAclHelper::rules(
    const Velo::String& intf) const {
  return hardware_->rules(intf);
}

std::vector<Velo::String> ObservedAclHelper::intfs() const {
  return hardware_->intfs();
}

}  // namespace ZelAgent
