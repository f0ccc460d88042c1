#include "tests/agent/model/fresh/KeptFacts.h"

#include <algorithm>
#include <vector>

#include "Mox/QuotedString.h"

namespace ZelAgent {
namespace {

template <class Map>
std::map<std::string, std::string> sortedTexts(const Map& map) {
  std::map<std::string, std::string> sorted;
  for (auto entry = map.iterator(); entry; ++entry)
    sorted.emplace(entry.key().str(), entry.value().str());
  return sorted;
}

const NetworkInstance* instanceIn(const Configuration& configuration, const std::string& name) {
  const auto found =
      std::find_if(configuration.networkInstances.begin(), configuration.networkInstances.end(),
                   [&](const NetworkInstance& instance) { return instance.name == name; });
  return found == configuration.networkInstances.end() ? nullptr : &*found;
}

std::string fallbackIn(const Configuration& configuration, const std::string& name) {
  const NetworkInstance* const instance = instanceIn(configuration, name);
  return instance == nullptr ? "" : instance->fallback;
}

std::string lengthsText(IpFamily family, const std::string& vrf,
                        const std::set<std::uint8_t>& lengths) {
  std::string text = "prefix lengths " + toText(family) + ' ' + Mox::quoted(vrf) + ':';
  for (const std::uint8_t length : lengths)
    text += ' ' + std::to_string(length);
  return text + '\n';
}

std::string lengthsText(IpFamily family, const Routing::Hardware::RouteStatusBase& routes) {
  std::map<std::string, std::set<std::uint8_t>> lengths;
  const auto& present = routes.vrfPrefixLensInExactMatch();
  for (auto entry = present.iterator(); entry; ++entry) {
    std::set<std::uint8_t>& ofVrf = lengths[entry.key().str()];
    for (unsigned length = 0; length <= Routing::Hardware::PrefixLensInExactMatch::longest;
         ++length) {
      const auto candidate = static_cast<std::uint8_t>(length);
      if (entry.value()->prefixLenHas(candidate)) ofVrf.insert(candidate);
    }
  }
  std::string text;
  for (const auto& [vrf, ofVrf] : lengths)
    text += lengthsText(family, vrf, ofVrf);
  return text;
}

std::string flagsText(bool decapNh, bool decapNhFallback, std::uint32_t chipCapacity) {
  return "decap-nh " + std::to_string(decapNh) + ", decap-nh-fallback " +
         std::to_string(decapNhFallback) + ", chip capacity " + std::to_string(chipCapacity) + '\n';
}

std::string idText(const std::string& vrf, std::uint32_t id) {
  return "vrf " + Mox::quoted(vrf) + " id " + std::to_string(id) + '\n';
}

std::string fallbackText(const std::string& vrf, const std::string& fallback) {
  return "fallback " + Mox::quoted(vrf) + " to " + Mox::quoted(fallback) + '\n';
}

// Instances only: their VRFs have statuses and ids, and no action is used.
Configuration withoutPolicies(Configuration configuration) {
  for (NetworkInstance& instance : configuration.networkInstances) {
    instance.policies.clear();
    instance.policyBindings.clear();
  }
  return configuration;
}

}  // namespace

bool KeptFacts::isConfigured(const std::string& vrf) const {
  return instanceIn(configuration_, vrf) != nullptr;
}

void KeptFacts::bringUp(const NetworkInstance& instance) {
  std::uint32_t id = 1;
  while (std::any_of(givenIds_.begin(), givenIds_.end(),
                     [&](const auto& given) { return given.second == id; })) {
    ++id;
  }
  givenIds_[instance.name] = id;
  vrfIds_[instance.name] = id;
}

void KeptFacts::takeDown(const std::string& vrf) {
  givenIds_.erase(vrf);
  vrfIds_.erase(vrf);
  fallbacks_.erase(vrf);
}

void KeptFacts::configurationIs(const Configuration& next) {
  for (const NetworkInstance& instance : next.networkInstances) {
    if (!isConfigured(instance.name)) bringUp(instance);
    if (instance.fallback == fallbackIn(configuration_, instance.name)) continue;
    if (instance.fallback.empty()) {
      fallbacks_.erase(instance.name);
    } else {
      fallbacks_[instance.name] = instance.fallback;
    }
  }
  for (const NetworkInstance& instance : configuration_.networkInstances) {
    if (instanceIn(next, instance.name) == nullptr) takeDown(instance.name);
  }
  configuration_ = next;
}

void KeptFacts::removeAll() {
  configurationIs({});
  vrfIds_.clear();
  fallbacks_.clear();
  prefixLens_.clear();
  routes_.clear();
}

bool KeptFacts::takeId(const std::string& vrf, std::uint32_t id) {
  const auto status = vrfIds_.find(vrf);
  if (status == vrfIds_.end()) return false;
  status->second = id;
  return true;
}

bool KeptFacts::take(const Event& event) {
  struct Visitor {
    KeptFacts& facts;

    bool operator()(const SetVrfId& set) const { return facts.takeId(set.vrf, set.id); }
    bool operator()(const RemoveVrf& remove) const { return facts.vrfIds_.erase(remove.vrf) != 0; }
    bool operator()(const AddVrf& add) const {
      facts.vrfIds_[add.vrf] = add.id;
      return true;
    }
    bool operator()(const SetFallback& set) const {
      facts.fallbacks_[set.vrf] = set.fallback;
      return true;
    }
    bool operator()(const RemoveFallback& remove) const {
      return facts.fallbacks_.erase(remove.vrf) != 0;
    }
    bool operator()(const SetDecapNh& set) const {
      facts.decapNh_ = set.isOn;
      return true;
    }
    bool operator()(const SetDecapNhFallback& set) const {
      facts.decapNhFallback_ = set.isOn;
      return true;
    }
    bool operator()(const SetPrefixLens& set) const {
      facts.prefixLens_[{set.family, set.vrf}] = set.lengths;
      return true;
    }
    bool operator()(const RemovePrefixLens& remove) const {
      return facts.prefixLens_.erase({remove.family, remove.vrf}) != 0;
    }
    bool operator()(const ApplyConfig& /*apply*/) const { return true; }
    bool operator()(const SetChipRules& /*set*/) const { return true; }
    bool operator()(const SetChipCapacity& set) const {
      facts.chipCapacity_ = set.capacity;
      return true;
    }
    bool operator()(const PlanChipFaults& /*plan*/) const { return true; }
    bool operator()(const SetDecapRoute& set) const {
      facts.routes_.insert_or_assign({set.vrf, set.prefix}, set);
      return true;
    }
    bool operator()(const SetEgressRoute& set) const {
      facts.routes_.insert_or_assign({set.vrf, set.prefix}, set);
      return true;
    }
    bool operator()(const RemoveRoute& remove) const {
      return facts.routes_.erase({remove.vrf, remove.prefix}) != 0;
    }
    bool operator()(const Retry& /*retry*/) const { return true; }
    bool operator()(const Show& /*show*/) const { return true; }
  };
  return std::visit(Visitor{*this}, event);
}

std::string KeptFacts::text() const {
  std::string text = flagsText(decapNh_, decapNhFallback_, chipCapacity_);
  for (const auto& [vrf, id] : vrfIds_)
    text += idText(vrf, id);
  for (const auto& [vrf, fallback] : fallbacks_)
    text += fallbackText(vrf, fallback);
  for (const auto& [key, lengths] : prefixLens_)
    text += lengthsText(key.first, key.second, lengths);
  return text;
}

std::string KeptFacts::textOf(ForwardingAgent& agent) {
  const auto& routes = agent.routeStatus();
  std::string text =
      flagsText(routes.decapNhEnabled(), routes.decapNhFallbackEnabled(), agent.chip().capacity());
  std::map<std::string, std::uint32_t> ids;
  for (auto entry = routes.vrfStatus().iterator(); entry; ++entry)
    ids.emplace(entry.key().str(), entry.value()->vrfId());
  for (const auto& [vrf, id] : ids)
    text += idText(vrf, id);
  for (const auto& [vrf, fallback] : sortedTexts(agent.fallbackConfig().fallbackVrf()))
    text += fallbackText(vrf, fallback);
  return text + lengthsText(IpFamily::v4, agent.routeStatus()) +
         lengthsText(IpFamily::v6, agent.routeStatusV6());
}

std::unique_ptr<ServedAgent> KeptFacts::freshAgent() const {
  auto fresh = std::make_unique<ServedAgent>("fresh", chipCapacity_);
  fresh->agent().apply(withoutPolicies(configuration_));
  const auto play = [&](const Event& event) { static_cast<void>(fresh->play(event)); };
  play(SetDecapNh{decapNh_});
  play(SetDecapNhFallback{decapNhFallback_});
  for (const auto& [key, lengths] : prefixLens_)
    play(SetPrefixLens{key.first, key.second, lengths});
  for (const auto& [key, route] : routes_)
    play(route);
  playVrfs(*fresh);
  playFallbacks(*fresh);
  fresh->agent().apply(configuration_);
  return fresh;
}

void KeptFacts::playVrfs(ServedAgent& agent) const {
  for (const auto& [vrf, id] : vrfIds_)
    static_cast<void>(agent.play(AddVrf{vrf, id}));
  for (const NetworkInstance& instance : configuration_.networkInstances) {
    if (!vrfIds_.contains(instance.name)) {
      static_cast<void>(agent.play(RemoveVrf{instance.name}));
    }
  }
}

void KeptFacts::playFallbacks(ServedAgent& agent) const {
  for (const auto& [vrf, fallback] : fallbacks_)
    static_cast<void>(agent.play(SetFallback{vrf, fallback}));
  for (const NetworkInstance& instance : configuration_.networkInstances) {
    if (!instance.fallback.empty() && !fallbacks_.contains(instance.name)) {
      static_cast<void>(agent.play(RemoveFallback{instance.name}));
    }
  }
}

}  // namespace ZelAgent
