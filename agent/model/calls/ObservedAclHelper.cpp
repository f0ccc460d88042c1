#include "agent/model/calls/ObservedAclHelper.h"

#include <utility>

namespace ZelAgent {

using PolicyMap::AclResult;
using PolicyMap::AclRule;

ObservedAclHelper::ObservedAclHelper(const Velo::String& name,
                                     Mox::Ptr<PolicyMapAclHelper> hardware,
                                     const ChipObserver& observer)
    : PassingAclHelper(name, std::move(hardware)), observer_(observer) {}

AclResult ObservedAclHelper::addRule(const Velo::String& intf, std::size_t place,
                                     const AclRule& rule) {
  AclResult result = PassingAclHelper::addRule(intf, place, rule);
  if (observer_) observer_(RuleCall{RuleCall::Kind::add, intf, place, 0, rule, result.accepted});
  return result;
}

void ObservedAclHelper::removeRule(const Velo::String& intf, std::size_t place) {
  if (observer_) observer_(RuleCall{RuleCall::Kind::remove, intf, place, 0, rules(intf)[place]});
  PassingAclHelper::removeRule(intf, place);
}

void ObservedAclHelper::moveRule(const Velo::String& intf, std::size_t from, std::size_t to) {
  if (observer_) observer_(RuleCall{RuleCall::Kind::move, intf, from, to, rules(intf)[from]});
  PassingAclHelper::moveRule(intf, from, to);
}

AclResult ObservedAclHelper::replaceRule(const Velo::String& intf, std::size_t place,
                                         const AclRule& rule) {
  const AclRule before = rules(intf)[place];
  AclResult result = PassingAclHelper::replaceRule(intf, place, rule);
  if (observer_) {
    observer_(RuleCall{RuleCall::Kind::replace, intf, place, 0, rule, result.accepted, &before});
  }
  return result;
}

}  // namespace ZelAgent
