#include "tests/chips/soft/ForwardWorld.h"

#include <gtest/gtest.h>

namespace Chips {

using PolicyMap::ActionType;
using PolicyMap::RuleAction;
using ZelVrfSelectionPolicy::VrfAction;

void ForwardWorld::vrfIs(const std::string& name) {
  vrfIdIs(name, nextId_++);
}

void ForwardWorld::vrfIdIs(const std::string& name, std::uint32_t id) {
  routes->vrfStatusIs(L3::VrfName(name))->vrfIdIs(id);
}

void ForwardWorld::fallbackIs(const std::string& vrf, const std::string& fallback) {
  fallbacks->fallbackVrfIs(vrf, fallback);
}

void ForwardWorld::exactMatchLenIs(const std::string& vrf, std::uint8_t length, Told told) {
  if (told == Told::both)
    routes->vrfPrefixLensInExactMatchIs(Velo::String(vrf))->prefixLenIs(length);
  tables.exactMatchLensIs(idOf(vrf), Ip::Family::v4, {length});
}

void ForwardWorld::exactMatchLenV6Is(const std::string& vrf, std::uint8_t length) {
  routesV6->vrfPrefixLensInExactMatchIs(Velo::String(vrf))->prefixLenIs(length);
  tables.exactMatchLensIs(idOf(vrf), Ip::Family::v6, {length});
}

void ForwardWorld::routeIs(const std::string& vrf, const std::string& text, const std::string& to) {
  Route route{Route::Kind::egress, to};
  if (to == "drop") route = {Route::Kind::drop, {}};
  if (to == "decap") route = {Route::Kind::decap, {}};
  tables.routeIs(idOf(vrf), prefix(text), route);
}

void ForwardWorld::ruleIs(const std::string& intf, const PolicyMap::AclRule& rule) {
  ruleWithoutResourceIs(intf, rule);
  if (rule.action.type != ActionType::vrf && rule.action.type != ActionType::decapVrf) return;
  EXPECT_EQ(chip->createVrf(resourceOf(rule.action)), ZelVrfSelectionPolicy::HwStatus());
}

void ForwardWorld::ruleWithoutResourceIs(const std::string& intf, const PolicyMap::AclRule& rule) {
  const Velo::String name(intf);
  EXPECT_TRUE(acl->addRule(name, acl->rules(name).size(), rule).accepted);
}

Verdict ForwardWorld::forward(const Bytes& packet, const std::string& intf) {
  const ExactBytes exact(packet);
  return forwarder.forward(intf, exact.span());
}

Verdict ForwardWorld::explain(const Bytes& packet, PacketWay& way) {
  const ExactBytes exact(packet);
  return forwarder.explain("in", exact.span(), way);
}

std::string ForwardWorld::where(const TestPacket& packet, const std::string& intf) {
  return shown(forward(packet.bytes(), intf));
}

std::string ForwardWorld::where(const std::string& destination) {
  TestPacket packet;
  packet.destination = destination;
  if (address(destination).family == Ip::Family::v6) packet.source = "2001:db8::1";
  return where(packet);
}

std::uint32_t ForwardWorld::idOf(const std::string& vrf) const {
  return routes->vrfStatus(L3::VrfName(vrf))->vrfId();
}

RuleAction lookUpIn(const std::string& vrf) {
  return {ActionType::vrf, vrf, {}, {}};
}

RuleAction decapsulateIn(const std::string& vrf, const std::string& fallback,
                         const std::string& postDecap) {
  return {ActionType::decapVrf, vrf, fallback, postDecap};
}

VrfAction resourceOf(const RuleAction& action) {
  VrfAction key(action.vrfName, action.type);
  key.fallbackVrfNameIs(action.fallbackVrfName);
  key.postDecapVrfNameIs(action.postDecapVrfName);
  return key;
}

PolicyMap::AclRule always(const RuleAction& action) {
  return {{}, action};
}

std::string shown(const Verdict& verdict) {
  return verdict.drop ? std::string(nameOf(*verdict.drop)) : verdict.egress;
}

}  // namespace Chips
