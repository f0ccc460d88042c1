#include "tests/agent/features/RandomWorld.h"

#include <algorithm>
#include <map>
#include <set>

namespace ZelAgent {
namespace {

const std::vector<std::string> configuredVrfs{"red", "blue", "green", "grey"};
const std::vector<std::string> unknownVrfs{"nowhere", "late"};

class WorldMaker final {
 public:
  explicit WorldMaker(RandomChoices& choices) : choices_(choices) {}

  RandomWorld make() {
    if (choices_.percent(20)) world_.chipCapacity = choices_.below(5);
    addInstances();
    addInterfaces();
    addPolicies();
    addFallbackChain();
    addDecapsulation();
    const unsigned events = choices_.below(16);
    for (unsigned event = 0; event < events; ++event)
      addEvent();
    return world_;
  }

 private:
  std::vector<NetworkInstance>& instances() { return world_.configuration.networkInstances; }

  void addInstances() {
    std::uint32_t id = 0;
    addInstance(defaultVrfName);
    instances().front().type = InstanceType::defaultInstance;
    for (const std::string& name : configuredVrfs) {
      if (choices_.percent(85)) addInstance(name);
    }
    for (const NetworkInstance& instance : instances())
      ids_[instance.name] = ++id;
  }

  void addInstance(const std::string& name) {
    NetworkInstance instance;
    instance.name = name;
    const unsigned routes = choices_.below(9);
    for (unsigned count = 0; count < routes; ++count)
      addRoute(instance);
    for (const IpFamily family : {IpFamily::v4, IpFamily::v6}) {
      if (choices_.percent(60)) addGatewayRoute(instance, family);
    }
    instances().push_back(instance);
  }

  static void addUnlessThere(NetworkInstance& instance, const StaticRoute& route) {
    for (const StaticRoute& other : instance.staticRoutes) {
      if (other.prefix == route.prefix) return;
    }
    instance.staticRoutes.push_back(route);
  }

  // Gateways that lead to each other in a circle come up, but only with one way out of it: which of
  // several is the first depends on where one begins. So the gateways of lists are addresses of
  // their own, and the route that contains them all names an interface.
  void addRoute(NetworkInstance& instance) {
    StaticRoute route{prefix(family()), {}};
    const IpFamily family = route.prefix.address.family;
    if (route.prefix.length == 0) {
      route.nextHops.push_back(nextHop(randomAddress(choices_, family)));
      if (!route.nextHops[0].drops) route.nextHops[0].interface = egress();
    } else if (choices_.percent(70)) {
      route.nextHops.push_back(nextHop(randomAddress(choices_, family)));
    } else {
      const unsigned nextHops = 2 + choices_.below(2);
      for (unsigned count = 0; count < nextHops; ++count)
        route.nextHops.push_back(nextHop(gatewayAddress(family), count));
    }
    addUnlessThere(instance, route);
  }

  // To gateways of lists.
  void addGatewayRoute(NetworkInstance& instance, IpFamily family) {
    static const std::vector<std::uint8_t> v4{24, 30, 31, 32};
    static const std::vector<std::uint8_t> v6{48, 126, 127, 128};
    const IpAddress address = gatewayAddress(family);
    const std::uint8_t length = choices_.oneOf(family == IpFamily::v4 ? v4 : v6);
    addUnlessThere(instance, {cut(address, length), {nextHop(gatewayAddress(family))}});
  }

  NextHop nextHop(const IpAddress& gateway, unsigned index = 0) {
    NextHop nextHop;
    nextHop.index = std::to_string(index);
    if (choices_.percent(10)) {
      nextHop.drops = true;
      return nextHop;
    }
    const bool leaves = choices_.percent(55);
    if (leaves) nextHop.interface = egress();
    if (!leaves || choices_.percent(30)) nextHop.address = gateway;
    return nextHop;
  }

  IpAddress gatewayAddress(IpFamily family) {
    IpAddress address{family, {198, 51, 100}};
    if (family == IpFamily::v6) address.bytes = {0x20, 0x01, 0x0d, 0xb9};
    address.bytes[addressBits(family) / 8 - 1] = static_cast<std::uint8_t>(choices_.below(4));
    return address;
  }

  void addInterfaces() {
    for (const std::string& interface : ingressInterfaces()) {
      NetworkInstance& instance = choices_.percent(70) ? anyInstance() : instances().front();
      instance.interfaces.push_back(interface);
    }
    for (unsigned number = 0; number < egressInterfaces; ++number)
      instances().front().interfaces.push_back(egress(number));
  }

  void addPolicies() {
    for (NetworkInstance& instance : instances()) {
      if (instance.name != defaultVrfName && choices_.percent(60)) continue;
      for (const char* const id : {"edge", "core"})
        instance.policies.push_back(policy(id));
    }
    for (const std::string& interface : ingressInterfaces()) {
      NetworkInstance& instance = anyInstance();
      if (instance.policies.empty() || choices_.percent(15)) continue;
      instance.policyBindings.push_back({interface, choices_.oneOf(instance.policies).policyId});
    }
  }

  Policy policy(const std::string& id) {
    Policy policy{id, {}};
    std::set<std::uint32_t> sequences;
    const unsigned rules = choices_.below(9);
    for (unsigned count = 0; count < rules; ++count)
      sequences.insert(1 + choices_.below(100));
    for (const std::uint32_t sequence : sequences)
      policy.rules.push_back({sequence, match(), action()});
    return policy;
  }

  RuleMatch match() {
    RuleMatch match;
    if (choices_.percent(10)) return match;
    match.family = choices_.percent(70) ? IpFamily::v4 : IpFamily::v6;
    if (choices_.percent(35)) match.protocol = randomProtocol(choices_);
    if (choices_.percent(15)) match.dscp = randomDscp(choices_);
    if (choices_.percent(20)) {
      std::set<std::uint8_t> set;
      const unsigned size = 1 + choices_.below(4);
      for (unsigned count = 0; count < size; ++count)
        set.insert(randomDscp(choices_));
      if (match.dscp) set.insert(*match.dscp);
      match.dscpSet.assign(set.begin(), set.end());
    }
    if (choices_.percent(30)) match.source = prefix(*match.family);
    if (choices_.percent(40)) match.destination = prefix(*match.family);
    return match;
  }

  RuleAction action() {
    const unsigned kind = choices_.below(10);
    if (kind == 0) return NoAction{};
    if (kind == 1) return Discard{};
    if (kind < 6) return LookUp{vrf()};
    return Decapsulate{vrf(), vrf(), vrf()};
  }

  void addFallbackChain() {
    for (NetworkInstance& instance : instances()) {
      std::string fallback = vrf();
      if (fallback == instance.name || choices_.percent(25)) continue;
      fallbacks_.insert(instance.name);
      instance.fallback = std::move(fallback);
    }
  }

  void addDecapsulation() {
    if (choices_.percent(80)) add(SetDecapNh{true});
    const unsigned routes = 1 + choices_.below(5);
    for (unsigned count = 0; count < routes; ++count)
      addDecapRoute();
  }

  void addDecapRoute() {
    const SetDecapRoute event{existingVrf(), prefix(IpFamily::v4)};
    eventRoutes_.emplace_back(event.vrf, event.prefix);
    add(event);
  }

  void addEgressRoute() {
    const SetEgressRoute event{existingVrf(), prefix(family()), egress()};
    eventRoutes_.emplace_back(event.vrf, event.prefix);
    add(event);
  }

  void removeRoute() {
    if (eventRoutes_.empty()) return;
    const auto [vrf, prefix] = choices_.oneOf(eventRoutes_);
    std::erase(eventRoutes_, std::pair(vrf, prefix));
    add(RemoveRoute{vrf, prefix});
  }

  void addEvent() {
    switch (choices_.below(14)) {
      case 0:
        return addDecapRoute();
      case 1:
        return addEgressRoute();
      case 2:
        return removeRoute();
      case 3:
        return setId();
      case 4:
        return choices_.percent(50) ? removeVrf() : addVrf();
      case 5:
      case 6:
        return setFallback();
      case 7:
        return removeFallback();
      case 8:
        return add(SetDecapNh{choices_.percent(60)});
      case 9:
        return add(SetDecapNhFallback{choices_.percent(60)});
      case 10:
      case 11:
        return setPrefixLens();
      case 12:
        return planFaults();
      default:
        if (choices_.percent(30)) add(SetChipCapacity{choices_.below(10)});
    }
  }

  void setId() {
    const std::string vrf = existingVrf();
    const std::uint32_t id = newId();
    ids_[vrf] = id;
    add(SetVrfId{vrf, id});
  }

  void removeVrf() {
    if (ids_.size() == 1) return;
    const std::string vrf = existingVrf();
    ids_.erase(vrf);
    add(RemoveVrf{vrf});
  }

  void addVrf() {
    const std::string vrf = this->vrf();
    const std::uint32_t id = newId();
    ids_[vrf] = id;
    add(AddVrf{vrf, id});
  }

  // Out of few, so that a number which one VRF had is had by another; of two VRFs that have it at
  // once both have the same lengths in exact match, which are none.
  std::uint32_t newId() {
    const std::uint32_t id = choices_.below(9);
    if (!sharesIds_ && id != 0) {
      for (const auto& [vrf, other] : ids_) {
        if (other == id) return 0;
      }
    }
    return id;
  }

  void setFallback() {
    const SetFallback event{existingVrf(), existingVrf()};
    fallbacks_.insert(event.vrf);
    add(event);
  }

  void removeFallback() {
    if (fallbacks_.empty()) return;
    const std::string vrf =
        choices_.oneOf(std::vector<std::string>(fallbacks_.begin(), fallbacks_.end()));
    fallbacks_.erase(vrf);
    add(RemoveFallback{vrf});
  }

  void setPrefixLens() {
    if (sharesIds_) return;
    SetPrefixLens event{family(), existingVrf(), {}};
    if (withLengths_.contains({event.family, event.vrf}) && choices_.percent(40)) {
      withLengths_.erase({event.family, event.vrf});
      return add(RemovePrefixLens{event.family, event.vrf});
    }
    const unsigned count = 1 + choices_.below(4);
    for (unsigned index = 0; index < count; ++index)
      event.lengths.insert(length(event.family));
    withLengths_.insert({event.family, event.vrf});
    add(event);
  }

  void planFaults() {
    PlanChipFaults event{{}, choices_.below(4)};
    if (choices_.percent(70)) event.vrf = existingVrf();
    add(event);
  }

  void add(const Event& event) { world_.events.push_back(event); }

  NetworkInstance& anyInstance() {
    return instances()[choices_.below(static_cast<unsigned>(instances().size()))];
  }

  // One that the hardware knows.
  std::string existingVrf() {
    std::vector<std::string> names;
    for (const auto& [name, id] : ids_)
      names.push_back(name);
    return choices_.oneOf(names);
  }

  std::string vrf() {
    if (choices_.percent(6)) return choices_.oneOf(unknownVrfs);
    if (choices_.percent(15)) return defaultVrfName;
    return choices_.oneOf(configuredVrfs);
  }

  IpFamily family() { return choices_.percent(70) ? IpFamily::v4 : IpFamily::v6; }

  std::string egress() { return egress(choices_.below(egressInterfaces)); }
  static std::string egress(unsigned number) { return "Ethernet" + std::to_string(20 + number); }

  std::uint8_t length(IpFamily family) {
    static const std::vector<std::uint8_t> v4{0, 0, 8, 9, 16, 16, 22, 23, 24, 24, 30, 31, 32};
    static const std::vector<std::uint8_t> v6{0, 0, 32, 33, 48, 48, 47, 64, 126, 127, 128};
    return choices_.oneOf(family == IpFamily::v4 ? v4 : v6);
  }

  IpPrefix prefix(IpFamily family) {
    const IpAddress address = randomAddress(choices_, family);
    return cut(address, length(family));
  }

  static IpPrefix cut(IpAddress address, std::uint8_t length) {
    for (unsigned bit = length; bit < addressBits(address.family); ++bit)
      address.bytes[bit / 8] &= static_cast<std::uint8_t>(~(0x80U >> bit % 8));
    return {address, length};
  }

  static constexpr unsigned egressInterfaces = 20;

  RandomChoices& choices_;
  RandomWorld world_;
  bool sharesIds_ = choices_.percent(30);
  std::map<std::string, std::uint32_t> ids_;
  std::set<std::string> fallbacks_;
  std::set<std::pair<IpFamily, std::string>> withLengths_;
  std::vector<std::pair<std::string, IpPrefix>> eventRoutes_;
};

}  // namespace

RandomWorld makeWorld(RandomChoices& choices) {
  return WorldMaker(choices).make();
}

const std::vector<std::string>& ingressInterfaces() {
  static const std::vector<std::string> interfaces{"Ethernet1", "Ethernet2", "Ethernet3/1",
                                                   "Ethernet4", "Ethernet5"};
  return interfaces;
}

IpAddress randomAddress(RandomChoices& choices, IpFamily family) {
  const auto digit = [&](unsigned bound) {
    return static_cast<std::uint8_t>(choices.below(bound));
  };
  if (family == IpFamily::v4) {
    const std::uint8_t first = choices.percent(80) ? 10 : 172;
    return {family, {first, digit(2), digit(3), digit(4)}};
  }
  IpAddress address{family, {0x20, 0x01, 0x0d, 0xb8, 0, digit(2), 0, digit(2)}};
  address.bytes[15] = digit(4);
  return address;
}

std::uint8_t randomProtocol(RandomChoices& choices) {
  static const std::vector<std::uint8_t> protocols{4, 4, 41, 41, 6, 17, 17, 58, 59, 0, 44, 255};
  return choices.oneOf(protocols);
}

std::uint8_t randomDscp(RandomChoices& choices) {
  static const std::vector<std::uint8_t> dscps{0, 0, 1, 10, 46, 63};
  return choices.oneOf(dscps);
}

}  // namespace ZelAgent
