#include "chips/soft/SoftForwarder.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "chips/packet/Decapsulation.h"
#include "chips/packet/HeaderRewrite.h"

namespace Chips {
namespace {

using PolicyMap::ActionType;
using PolicyMap::RuleAction;
using ZelVrfSelectionPolicy::VrfAction;

VrfAction resourceKeyOf(const RuleAction& action) {
  VrfAction key(action.vrfName, action.type);
  key.fallbackVrfNameIs(action.fallbackVrfName);
  key.postDecapVrfNameIs(action.postDecapVrfName);
  return key;
}

DropReason reasonOf(DecapFault fault) noexcept {
  switch (fault) {
    case DecapFault::fragmented:
      return DropReason::fragmentedTunnel;
    case DecapFault::innerMalformed:
      return DropReason::innerMalformed;
    case DecapFault::congestion:
      return DropReason::congestion;
    case DecapFault::none:
    case DecapFault::notATunnel:
      break;
  }
  return DropReason::notATunnel;
}

const std::vector<unsigned char>& exactMatchLensOf(const VrfFacts& vrf, Ip::Family family) {
  return family == Ip::Family::v4 ? vrf.exactMatchLens : vrf.exactMatchLensV6;
}

}  // namespace

// Forwards one packet. Each function is one step, and ends with the call of the next step.
class SoftForwarder::Passage final {
 public:
  Passage(SoftForwarder& forwarder, const std::string& intf, std::span<const std::uint8_t> packet,
          PacketWay* way)
      : forwarder_(forwarder),
        intf_(intf),
        packet_(packet),
        arrivedBytes_(packet.size()),
        way_(way) {}

  Verdict verdict() {
    const ParsedHeader parsed = parse(packet_);
    if (parsed.fault == HeaderFault::badChecksum) return drop(DropReason::badChecksum);
    if (!parsed.header) return drop(DropReason::malformed, textOf(parsed.fault));
    header_ = *parsed.header;
    packet_ = packet_.first(header_.totalLength);
    arrivedBytes_ = header_.totalLength;
    if (way_ != nullptr) way_->parsed(header_);
    const Velo::String intf(intf_);
    if (const RuleAction* const action = actionOfFirstMatch(intf)) return take(*action);
    if (forwarder_.rules_.intfClosed(intf)) return drop(DropReason::intfClosed);
    return takeOwnVrf(OwnVrfReason::noRuleMatched);
  }

 private:
  struct Found {
    const VrfFacts* vrf;
    RouteHit hit;
  };

  const RuleAction* actionOfFirstMatch(const Velo::String& intf) {
    const auto place = way_ == nullptr ? forwarder_.rules_.classify(intf, header_) : tryRules(intf);
    if (!place) return nullptr;
    if (way_ == nullptr) forwarder_.rules_.count(intf, *place, header_.totalLength);
    return &forwarder_.rules_.rules(intf)[*place].action;
  }

  std::optional<std::size_t> tryRules(const Velo::String& intf) {
    const SoftAclHelper::Rules& rules = forwarder_.rules_.rules(intf);
    for (std::size_t place = 0; place < rules.size(); ++place) {
      const auto difference = firstDifference(*rules[place].match, header_);
      way_->ruleTried(place, rules[place], difference);
      if (!difference) return place;
    }
    return std::nullopt;
  }

  Verdict take(const RuleAction& action) {
    switch (action.type) {
      case ActionType::vrf:
      case ActionType::decapVrf:
        return takeResource(action);
      case ActionType::discard:
        if (way_ != nullptr) way_->actionTaken(action, std::nullopt);
        return drop(DropReason::discardedByRule);
      case ActionType::none:
        break;
    }
    if (way_ != nullptr) way_->actionTaken(action, std::nullopt);
    return takeOwnVrf(OwnVrfReason::ruleWithoutAction);
  }

  Verdict takeResource(const RuleAction& action) {
    const VrfAction key = resourceKeyOf(action);
    const VrfResource* const resource = forwarder_.resources_.resource(key);
    if (way_ != nullptr) way_->actionTaken(action, useOf(key, resource));
    if (resource == nullptr) return drop(DropReason::noVrfResource);
    return routeBy(resource->program);
  }

  [[nodiscard]] std::optional<ResourceUse> useOf(const VrfAction& key,
                                                 const VrfResource* resource) const {
    if (resource == nullptr) return std::nullopt;
    return ResourceUse{resource->index,
                       resource->program != forwarder_.resources_.currentProgram(key)};
  }

  Verdict takeOwnVrf(OwnVrfReason reason) {
    const auto& routeStatus = forwarder_.inputs_.routeStatus;
    VrfProgram now;
    now.lookUp = ownWalk(reason);
    now.decapNhEnabled = routeStatus && routeStatus->decapNhEnabled();
    now.decapNhFallbackEnabled = routeStatus && routeStatus->decapNhFallbackEnabled();
    return routeBy(now);
  }

  VrfWalk ownWalk(OwnVrfReason reason) {
    const L3::VrfName& vrf = forwarder_.ownVrf(intf_);
    if (way_ != nullptr) way_->ownVrfTaken(vrf, reason);
    return walkOf(vrf, forwarder_.inputs_);
  }

  Verdict routeBy(const VrfProgram& program) {
    const bool passOverDecap = !program.decapNhEnabled && program.decapNhFallbackEnabled;
    const auto found = search({&program.lookUp, &program.fallback}, passOverDecap);
    if (!found) return dropUnrouted();
    if (found->hit.route->kind != Route::Kind::decap) return routeBy(*found);
    if (!program.decapNhEnabled) return drop(DropReason::decapDisabled);
    return decapsulateBy(program);
  }

  Verdict decapsulateBy(const VrfProgram& program) {
    Decapsulation done = decapsulate(packet_, header_);
    if (done.fault != DecapFault::none) return drop(reasonOf(done.fault), detailOf(done));
    if (way_ != nullptr) way_->decapsulated(header_, done.arrived, done.header);
    header_ = done.header;
    packet_ = done.packet;
    if (!program.postDecap.empty()) return routeInner(program.postDecap);
    return routeInner(ownWalk(OwnVrfReason::noPostDecapVrf));
  }

  static std::string_view detailOf(const Decapsulation& decapsulation) noexcept {
    if (decapsulation.fault != DecapFault::innerMalformed) return {};
    if (decapsulation.innerFault != HeaderFault::none) return textOf(decapsulation.innerFault);
    return "the IP version is not that of the outer protocol";
  }

  Verdict routeInner(const VrfWalk& walk) {
    const auto found = search({&walk}, false);
    if (!found) return dropUnrouted();
    if (found->hit.route->kind == Route::Kind::decap) return drop(DropReason::nestedDecap);
    return routeBy(*found);
  }

  Verdict routeBy(const Found& found) {
    if (found.hit.route->kind == Route::Kind::drop) return drop(DropReason::dropRoute);
    Verdict verdict;
    verdict.packet.assign(packet_.begin(), packet_.end());
    if (!ttlDown(verdict.packet)) return drop(DropReason::ttlExpired);
    verdict.egress = found.hit.route->intf;
    --header_.ttl;
    if (way_ == nullptr) forwarder_.vrfCounters_[found.vrf->name].add(packet_.size());
    if (way_ != nullptr) way_->left(verdict.egress, found.vrf->name, header_);
    return verdict;
  }

  // Looks the destination up in the VRFs of each walk, one walk after the other.
  std::optional<Found> search(std::initializer_list<const VrfWalk*> walks, bool passOverDecap) {
    triedVrfs_.clear();
    GoOnReason reason = GoOnReason::noRoute;
    for (const VrfWalk* const walk : walks) {
      for (const VrfFacts& vrf : *walk) {
        if (isTried(vrf)) continue;
        if (way_ != nullptr && !triedVrfs_.empty()) way_->wentOn(*triedVrfs_.back(), vrf, reason);
        triedVrfs_.push_back(&vrf);
        const auto hit = lookUp(vrf);
        if (hit && !(passOverDecap && hit->route->kind == Route::Kind::decap))
          return Found{&vrf, *hit};
        reason = reasonToContinue(vrf, hit.has_value());
      }
    }
    return std::nullopt;
  }

  [[nodiscard]] bool isTried(const VrfFacts& vrf) const {
    return std::any_of(triedVrfs_.begin(), triedVrfs_.end(),
                       [&vrf](const VrfFacts* tried) { return tried->name == vrf.name; });
  }

  [[nodiscard]] std::optional<RouteHit> lookUp(const VrfFacts& vrf) const {
    std::optional<RouteHit> hit;
    if (vrf.vrfId != 0) {
      hit = forwarder_.routes_.lookUp(vrf.vrfId, header_.destination,
                                      exactMatchLensOf(vrf, header_.family));
    }
    if (way_ != nullptr) way_->lookedUp(vrf, header_.destination, hit);
    return hit;
  }

  static GoOnReason reasonToContinue(const VrfFacts& vrf, bool isHit) noexcept {
    if (isHit) return GoOnReason::decapDisabled;
    return vrf.vrfId == 0 ? GoOnReason::noVrfId : GoOnReason::noRoute;
  }

  Verdict dropUnrouted() {
    const bool anyTable = std::any_of(triedVrfs_.begin(), triedVrfs_.end(),
                                      [](const VrfFacts* vrf) { return vrf->vrfId != 0; });
    return drop(anyTable ? DropReason::noRoute : DropReason::noVrfId);
  }

  Verdict drop(DropReason reason, std::string_view detail = {}) {
    if (way_ == nullptr)
      forwarder_.dropCounters_[static_cast<std::size_t>(reason)].add(arrivedBytes_);
    if (way_ != nullptr) way_->dropped(reason, detail);
    Verdict verdict;
    verdict.drop = reason;
    return verdict;
  }

  SoftForwarder& forwarder_;
  const std::string& intf_;
  std::span<const std::uint8_t> packet_;
  std::size_t arrivedBytes_;
  PacketWay* way_;
  PacketHeader header_;
  std::vector<const VrfFacts*> triedVrfs_;  // for the current destination
};

SoftForwarder::SoftForwarder(SoftAclHelper& rules, const ChipVrfHelper& resources,
                             const SoftRouteTables& routes, ProgramInputs inputs)
    : rules_(rules), resources_(resources), routes_(routes), inputs_(std::move(inputs)) {}

void SoftForwarder::intfVrfIs(const std::string& intf, const L3::VrfName& vrf) {
  intfVrfs_[intf] = vrf;
}

void SoftForwarder::intfVrfDel(const std::string& intf) {
  intfVrfs_.erase(intf);
}

Verdict SoftForwarder::forward(const std::string& intf, std::span<const std::uint8_t> ipPacket) {
  return Passage(*this, intf, ipPacket, nullptr).verdict();
}

Verdict SoftForwarder::explain(const std::string& intf, std::span<const std::uint8_t> ipPacket,
                               PacketWay& way) {
  return Passage(*this, intf, ipPacket, &way).verdict();
}

std::map<L3::VrfName, PacketCounter> SoftForwarder::vrfCounters() const {
  return {vrfCounters_.begin(), vrfCounters_.end()};
}

PacketCounter SoftForwarder::dropCounter(DropReason reason) const {
  return dropCounters_[static_cast<std::size_t>(reason)];
}

void SoftForwarder::countersReset() {
  vrfCounters_.clear();
  dropCounters_.fill({});
}

const L3::VrfName& SoftForwarder::ownVrf(const std::string& intf) const {
  const auto found = intfVrfs_.find(intf);
  return found == intfVrfs_.end() ? L3::VrfName::defaultVrf() : found->second;
}

}  // namespace Chips
