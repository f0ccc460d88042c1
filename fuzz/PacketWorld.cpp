#include "fuzz/PacketWorld.h"

#include <algorithm>

namespace Fuzz {
namespace {

using Chips::ProgramInputs;
using Chips::Route;
using Chips::SoftAclHelper;
using Chips::SoftVrfHelper;
using PolicyMap::AclMatch;
using PolicyMap::AclRule;
using PolicyMap::ActionType;
using PolicyMap::RuleAction;
using ZelVrfSelectionPolicy::VrfAction;

constexpr std::uint32_t resources = 8;
constexpr std::uint32_t rules = 64;

// The last one has no hardware id at first.
constexpr std::array<const char*, 4> vrfs{"default", "red", "blue", "green"};

constexpr Ip::Address v4(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
  return {Ip::Family::v4, {a, b, c, d}};
}

// 2001:db8::`last`
constexpr Ip::Address v6(std::uint8_t last) {
  Ip::Address address{Ip::Family::v6, {0x20, 0x01, 0x0d, 0xb8}};
  address.bytes[15] = last;
  return address;
}

constexpr std::array<Ip::Address, 8> addresses{v4(192, 0, 2, 1),
                                               v4(192, 0, 2, 77),
                                               v4(198, 51, 100, 1),
                                               v4(10, 0, 0, 1),
                                               v6(1),
                                               v6(2),
                                               v6(0xff),
                                               Ip::Address{Ip::Family::v6, {}}};

const Ip::Address& addressOf(FuzzedBytes& input) {
  return addresses[input.below(addresses.size())];
}

Ip::Prefix prefixOf(FuzzedBytes& input, const Ip::Address& address) {
  const unsigned length = input.below(Ip::addressBits(address.family) + 1);
  return {Ip::firstBits(address, length), static_cast<std::uint8_t>(length)};
}

// A prefix of the family.
Ip::Prefix prefixOf(FuzzedBytes& input, Ip::Family family) {
  const std::size_t half = addresses.size() / 2;
  const std::size_t first = family == Ip::Family::v4 ? 0 : half;
  return prefixOf(input, addresses[first + input.below(static_cast<unsigned>(half))]);
}

L3::VrfName vrfOf(FuzzedBytes& input) {
  return vrfs[input.below(vrfs.size())];
}

L3::VrfName vrfOrNone(FuzzedBytes& input) {
  const unsigned number = input.below(vrfs.size() + 1);
  return number == vrfs.size() ? L3::VrfName() : L3::VrfName(vrfs[number]);
}

const std::string& intfOf(FuzzedBytes& input) {
  return PacketWorld::intfs()[input.below(2)];
}

Classification::PrefixSet prefixSetOf(FuzzedBytes& input, Ip::Family family) {
  Classification::PrefixSet set;
  for (unsigned count = input.below(4); count > 0; --count)
    set.prefixes.push_back(prefixOf(input, family));
  for (unsigned count = input.below(3); count > 0; --count)
    set.excluded.push_back(prefixOf(input, family));
  return set;
}

std::vector<PolicyMap::NumberRange> rangesOf(FuzzedBytes& input) {
  std::vector<PolicyMap::NumberRange> ranges;
  for (unsigned count = input.below(4); count > 0; --count) {
    const unsigned first = input.byte();
    ranges.push_back({static_cast<std::uint16_t>(first),
                      static_cast<std::uint16_t>(input.flag() ? 65535U : first + input.below(16))});
  }
  return ranges;
}

// Adds fields that few rules have.
void addFields(FuzzedBytes& input, AclMatch& match) {
  const std::uint8_t fields = input.byte();
  if ((fields & 1U) != 0) match.sourceSet = prefixSetOf(input, *match.family);
  if ((fields & 2U) != 0) match.destinationSet = prefixSetOf(input, *match.family);
  if ((fields & 4U) != 0) match.hopLimit = input.byte();
  if ((fields & 8U) != 0) match.length = input.byte();
  match.isFragment = (fields & 16U) != 0;
  if ((fields & 32U) != 0) match.fragmentOffsets = rangesOf(input);
  if ((fields & 64U) != 0) {
    match.sourcePorts = rangesOf(input);
    match.destinationPorts = rangesOf(input);
  }
  for (unsigned count = (fields & 128U) != 0 ? input.below(3) : 0; count > 0; --count) {
    const std::uint8_t mask = input.byte();
    match.tcpFlags.push_back({mask, static_cast<std::uint8_t>(input.byte() & mask)});
  }
  match.matchesLaterFragments = match.comparesUpperLayer() && input.flag();
}

AclMatch matchOf(FuzzedBytes& input) {
  AclMatch match;
  const std::uint8_t fields = input.byte();
  if ((fields & 1U) == 0) return match;
  match.family = (fields & 2U) == 0 ? Ip::Family::v4 : Ip::Family::v6;
  if ((fields & 4U) != 0) match.protocol = input.byte();
  if ((fields & 8U) != 0) {
    match.dscps = 0;
    for (unsigned count = input.below(4); count > 0; --count)
      *match.dscps |= std::uint64_t{1} << input.below(64);
  }
  if ((fields & 16U) != 0) match.source = prefixOf(input, *match.family);
  if ((fields & 32U) != 0) match.destination = prefixOf(input, *match.family);
  if ((fields & 64U) != 0) addFields(input, match);
  return match;
}

RuleAction actionOf(FuzzedBytes& input) {
  RuleAction action;
  action.type = static_cast<ActionType>(input.below(4));
  const bool namesVrf = action.type == ActionType::vrf || action.type == ActionType::decapVrf;
  if (namesVrf) action.vrfName = vrfOf(input);
  if (action.type == ActionType::decapVrf) {
    action.fallbackVrfName = vrfOrNone(input);
    action.postDecapVrfName = vrfOrNone(input);
  }
  return action;
}

Route routeOf(FuzzedBytes& input) {
  const auto kind = static_cast<Route::Kind>(input.below(3));
  return {kind, kind == Route::Kind::egress ? "out" : ""};
}

}  // namespace

const std::array<std::string, 2>& PacketWorld::intfs() {
  static const std::array<std::string, 2> names{"in", "other"};
  return names;
}

// The network at first: rules for tunnels on one interface, a default route in each family, a route
// that decapsulates, a route that drops, and two VRFs with a fallback.
PacketWorld::PacketWorld()
    : fallbacks_(VrfSelectionPolicy::VrfSelectionFallbackVrf::VrfSelectionFallbackVrfIs()),
      routes_(Routing::Hardware::RouteStatus::RouteStatusIs()),
      routesV6_(Routing6::Hardware::RouteStatus::RouteStatusIs()),
      chip_(Mox::makeActivePtr<SoftVrfHelper>(
          Velo::String("chip"), ProgramInputs{fallbacks_, routes_, routesV6_}, resources)),
      acl_(Mox::makeActivePtr<SoftAclHelper>(Velo::String("acl"), rules)),
      forwarder_(*acl_, *chip_, tables_, {fallbacks_, routes_, routesV6_}) {
  for (std::uint32_t number = 0; number < vrfs.size(); ++number)
    routes_->vrfStatusIs(L3::VrfName(vrfs[number]))->vrfIdIs((number + 1) % vrfs.size());
  routes_->decapNhEnabledIs(true);
  fallbacks_->fallbackVrfIs("red", "blue");
  fallbacks_->fallbackVrfIs("green", "default");
  for (const Ip::Family family : {Ip::Family::v4, Ip::Family::v6})
    routeIs("default", {Ip::Address{family, {}}, 0}, {Route::Kind::egress, "out"});
  routeIs("red", {Ip::firstBits(addresses[2], 24), 24}, {Route::Kind::decap, {}});
  routeIs("blue", {Ip::firstBits(addresses[3], 8), 8}, {Route::Kind::drop, {}});
  routeIs("blue", {Ip::firstBits(addresses[4], 32), 32}, {Route::Kind::egress, "tunnel"});
  for (const std::uint8_t protocol : {std::uint8_t{4}, std::uint8_t{41}}) {
    AclMatch tunnels;
    tunnels.family = Ip::Family::v4;
    tunnels.protocol = protocol;
    addRule("in", {tunnels, {ActionType::decapVrf, "red", "default", {}}});
  }
}

void PacketWorld::change(FuzzedBytes& input) {
  switch (input.below(7)) {
    case 0:
      return ruleIs(input);
    case 1:
      return routeIs(input);
    case 2:
      return lengthsAre(input);
    case 3: {
      const L3::VrfName vrf = vrfOf(input);
      return fallbacks_->fallbackVrfIs(vrf, vrfOf(input));
    }
    case 4:
      routes_->decapNhEnabledIs(input.flag());
      return routes_->decapNhFallbackEnabledIs(input.flag());
    case 5: {
      const auto status = routes_->vrfStatus(vrfOf(input));
      return status->vrfIdIs(input.below(5));
    }
    default: {
      const std::string& intf = intfOf(input);
      return forwarder_.intfVrfIs(intf, vrfOf(input));
    }
  }
}

std::uint64_t PacketWorld::packetsByRules(const std::string& intf) const {
  const Velo::String name(intf);
  std::uint64_t packets = 0;
  for (std::size_t place = 0; place < acl_->rules(name).size(); ++place)
    packets += acl_->counter(name, place).packets;
  return packets;
}

// Adds a rule at the front or at the end of the rules. May program the resource of its action
// again.
void PacketWorld::ruleIs(FuzzedBytes& input) {
  const std::string& intf = intfOf(input);
  const std::uint8_t how = input.byte();
  const AclRule rule{matchOf(input), actionOf(input)};
  addRule(intf, rule);
  const Velo::String name(intf);
  if ((how & 1U) != 0) acl_->moveRule(name, acl_->rules(name).size() - 1, 0);
  if ((how & 2U) != 0) program(rule.action);
}

void PacketWorld::routeIs(FuzzedBytes& input) {
  const L3::VrfName vrf = vrfOf(input);
  const Ip::Prefix prefix = prefixOf(input, addressOf(input));
  routeIs(vrf, prefix, routeOf(input));
}

void PacketWorld::routeIs(const L3::VrfName& vrf, const Ip::Prefix& prefix, const Route& route) {
  const std::uint32_t id = routes_->vrfStatus(vrf)->vrfId();
  if (id != 0) tables_.routeIs(id, prefix, route);
}

// Puts one length into exact match: in the chip's tables, in the facts, or in both.
void PacketWorld::lengthsAre(FuzzedBytes& input) {
  const L3::VrfName vrf = vrfOf(input);
  const Ip::Family family = input.flag() ? Ip::Family::v6 : Ip::Family::v4;
  const auto length = static_cast<std::uint8_t>(input.below(Ip::addressBits(family) + 1));
  const unsigned where = input.below(3);
  const std::uint32_t id = routes_->vrfStatus(vrf)->vrfId();
  if (where != 0 && id != 0) tables_.exactMatchLensIs(id, family, {length});
  if (where == 1) return;
  const Velo::String key(vrf.bytes());
  if (family == Ip::Family::v4) {
    routes_->vrfPrefixLensInExactMatchIs(key)->prefixLenIs(length);
  } else {
    routesV6_->vrfPrefixLensInExactMatchIs(key)->prefixLenIs(length);
  }
}

void PacketWorld::addRule(const std::string& intf, const AclRule& rule) {
  const Velo::String name(intf);
  static_cast<void>(acl_->addRule(name, acl_->rules(name).size(), rule));
  program(rule.action);
}

void PacketWorld::program(const RuleAction& action) {
  if (action.type != ActionType::vrf && action.type != ActionType::decapVrf) return;
  VrfAction key(action.vrfName, action.type);
  key.fallbackVrfNameIs(action.fallbackVrfName);
  key.postDecapVrfNameIs(action.postDecapVrfName);
  static_cast<void>(chip_->resource(key) == nullptr ? chip_->createVrf(key)
                                                    : chip_->updateVrf(key));
}

}  // namespace Fuzz
