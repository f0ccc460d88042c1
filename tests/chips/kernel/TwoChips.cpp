#include "tests/chips/kernel/TwoChips.h"

#include <linux/bpf.h>

#include <algorithm>
#include <set>
#include <sstream>
#include <stdexcept>

#include "chips/interface/DropReason.h"
#include "chips/kernel/layout/Action.h"
#include "chips/kernel/layout/Counters.h"

namespace KernelChip {
namespace {

using Chips::Bytes;
using Chips::DropReason;
using Chips::VrfWalk;
using PolicyMap::ActionType;

constexpr std::uint32_t mtu = 9000;

std::string nameOf(std::uint32_t reason) {
  if (reason < Chips::dropReasons)
    return std::string(Chips::nameOf(static_cast<DropReason>(reason)));
  return "the kernel's, reason " + std::to_string(reason);
}

// The VRFs with an id, none twice.
std::uint32_t writeSteps(ZelWalkStep* steps, std::initializer_list<const VrfWalk*> walks) {
  std::set<L3::VrfName> tried;
  std::uint32_t count = 0;
  for (const VrfWalk* const walk : walks) {
    for (const Chips::VrfFacts& vrf : *walk) {
      if (!tried.insert(vrf.name).second || vrf.vrfId == 0) continue;
      ZelWalkStep& step = steps[count++];
      step = {vrf.vrfId, 0, 0, {}};
      for (const unsigned char length : vrf.exactMatchLens)
        step.v4Lengths |= std::uint64_t{1} << length;
      for (const unsigned char length : vrf.exactMatchLensV6)
        step.v6Lengths[length / 64] |= std::uint64_t{1} << length % 64;
    }
  }
  return count;
}

void append(Bytes& bytes, std::initializer_list<std::uint32_t> words) {
  for (const std::uint32_t word : words) {
    bytes.push_back(static_cast<std::uint8_t>(word >> 8));
    bytes.push_back(static_cast<std::uint8_t>(word));
  }
}

std::uint32_t typeOf(const Bytes& packet) {
  return !packet.empty() && packet[0] >> 4 == 6 ? 0x86dd : 0x0800;
}

}  // namespace

TwoChips::TwoChips() : kernel(PlaneSizes{}) {
  for (const char* const name : {"drop", "decap"})
    static_cast<void>(hopTo(name));
}

void TwoChips::intfIs(const std::string& intf, std::uint16_t vlan, const std::string& vrf,
                      bool isClosed) {
  const auto classifier = static_cast<std::uint32_t>(intfs_.size()) + 1;
  soft.forwarder.intfVrfIs(intf, L3::VrfName(vrf));
  soft.acl->intfClosedIs(Velo::String(intf), isClosed);
  auto rules = std::make_unique<ChipTables::RuleList>(
      kernel.classifiers[classifier], classifier,
      kernel.rules.values().subspan(classifier * std::size_t{zelRules}, zelRules), sets_,
      kernel.elements, clock_);
  intfs_[intf] = {vlan, vrf, isClosed, classifier, std::move(rules), {}};
}

void TwoChips::exactMatchLenIs(const std::string& vrf, Ip::Family family, std::uint8_t length) {
  exactLengths_[{vrf, family, length}] = true;
  if (family == Ip::Family::v4) {
    soft.exactMatchLenIs(vrf, length);
  } else {
    soft.exactMatchLenV6Is(vrf, length);
  }
}

void TwoChips::routeIs(const std::string& vrf, const std::string& prefix, const std::string& to) {
  soft.routeIs(vrf, prefix, to);
  const Ip::Prefix parsed = Chips::prefix(prefix);
  const bool isExact = exactLengths_.count({vrf, parsed.address.family, parsed.length}) != 0;
  routeIs(idOf(vrf), parsed, hopTo(to), isExact);
}

void TwoChips::routeIs(std::uint32_t vrf, const Ip::Prefix& prefix, std::uint32_t hop,
                       bool isExact) {
  const bool isV6 = prefix.address.family == Ip::Family::v6;
  const auto& bytes = prefix.address.bytes;
  int error = 0;
  if (isExact) {
    ZelExactRouteKey key{vrf, prefix.length, static_cast<__u16>(isV6), {}};
    std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(key.address));
    error = kernel.exactRoutes.valueIs(key, hop);
  } else if (isV6) {
    ZelV6RouteKey key{32U + prefix.length, vrf, {}};
    std::copy(bytes.begin(), bytes.end(), key.address);
    error = kernel.v6Routes.valueIs(key, {hop, prefix.length});
  } else {
    const std::uint32_t address = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
                                  std::uint32_t{bytes[2]} << 8 | bytes[3];
    error = trie_.routeIs(rootOf(vrf), {address, prefix.length, hop}) ? 0 : 1;
  }
  if (error != 0) throw std::runtime_error("a route does not fit");
}

std::uint32_t TwoChips::rootOf(std::uint32_t vrf) {
  if (kernel.v4Roots[vrf] == 0) kernel.v4Roots[vrf] = trie_.rootIs().value();
  return static_cast<std::uint32_t>(kernel.v4Roots[vrf]);
}

std::uint32_t TwoChips::hopTo(const std::string& to) {
  const auto [hop, isNew] = hops_.try_emplace(to, static_cast<std::uint32_t>(egresses_.size()));
  if (!isNew) return hop->second;
  const std::uint32_t number = hop->second;
  egresses_.push_back(to);
  ZelNextHop& entry = kernel.nextHops[number];
  entry.ifindex = 1;
  entry.mtu = mtu;
  entry.vlan = number % 2 == 0 ? 0 : static_cast<__u16>(100 + number);
  entry.isResolved = 1;
  entry.destination[5] = static_cast<std::uint8_t>(number);
  entry.source[5] = 0xaa;
  entry.kind = to == "drop" ? zelHopDrop : to == "decap" ? zelHopDecap : zelHopEgress;
  return number;
}

void TwoChips::ruleIs(const std::string& intf, const PolicyMap::AclRule& rule, bool hasResource) {
  const PolicyMap::RuleAction& action = rule.action;
  const bool usesResource = action.type == ActionType::vrf || action.type == ActionType::decapVrf;
  const bool isNew = usesResource && resources_.count(Chips::resourceOf(action)) == 0;
  if (isNew && hasResource) {
    soft.ruleIs(intf, rule);
  } else {
    soft.ruleWithoutResourceIs(intf, rule);
  }
  Intf& present = intfs_.at(intf);
  present.counters.push_back(nextCounter_);
  const std::uint32_t kind = usesResource                         ? zelActionResource
                             : action.type == ActionType::discard ? zelActionDiscard
                                                                  : zelActionNone;
  const std::uint32_t resource = usesResource ? resourceOf(action) : 0;
  if (!present.rules->addRule(present.rules->size(), *rule.match,
                              zelAction(kind, resource, nextCounter_++)))
    throw std::runtime_error("a rule does not fit");
}

std::uint32_t TwoChips::resourceOf(const PolicyMap::RuleAction& action) {
  const auto number = static_cast<std::uint32_t>(resources_.size()) + 1;
  return resources_.try_emplace(Chips::resourceOf(action), number).first->second;
}

std::uint32_t TwoChips::programIs(const Chips::VrfProgram& program) {
  ZelProgram& entry = kernel.programs[nextProgram_];
  if (program.decapNhEnabled) entry.flags |= zelDecapEnabled;
  if (program.decapNhFallbackEnabled) entry.flags |= zelDecapFallbackEnabled;
  if (!program.postDecap.empty()) entry.flags |= zelInnerNamed;
  entry.steps = writeSteps(entry.lookUp, {&program.lookUp, &program.fallback});
  entry.innerSteps = writeSteps(entry.inner, {&program.postDecap});
  return nextProgram_++;
}

void TwoChips::programsIs() {
  const Chips::ProgramInputs inputs{soft.fallbacks, soft.routes, soft.routesV6};
  for (const auto& [action, number] : resources_) {
    const auto* const resource = soft.chip->resource(action);
    if (resource != nullptr) kernel.resources[number] = programIs(resource->program);
  }
  for (const auto& [name, intf] : intfs_) {
    Chips::VrfProgram own;
    own.lookUp = walkOf(L3::VrfName(intf.vrf), inputs);
    own.decapNhEnabled = soft.routes->decapNhEnabled();
    own.decapNhFallbackEnabled = soft.routes->decapNhFallbackEnabled();
    const ZelPort port{intf.classifier, intf.isClosed ? 1U : 0U, programIs(own), intf.classifier};
    if (kernel.ports.valueIs({1, intf.vlan}, port) != 0)
      throw std::runtime_error("a port does not fit");
  }
}

std::uint32_t TwoChips::idOf(const std::string& vrf) const {
  const auto status = soft.routes->vrfStatus(L3::VrfName(vrf));
  return status ? status->vrfId() : 0;
}

Outcome TwoChips::softOutcome(const std::string& intf, const Bytes& packet) {
  const Chips::Verdict verdict = soft.forward(packet, intf);
  if (verdict.drop) return {std::string(Chips::nameOf(*verdict.drop)), {}};
  return {"by " + verdict.egress, verdict.packet};
}

Outcome TwoChips::kernelOutcome(const std::string& intf, const Bytes& packet) {
  Bytes frame;
  append(frame, {0, 0, 1, 0, 0, 2});
  if (const std::uint16_t vlan = intfs_.at(intf).vlan; vlan != 0) append(frame, {0x8100, vlan});
  append(frame, {typeOf(packet)});
  frame.insert(frame.end(), packet.begin(), packet.end());
  const auto before = reasons();
  const FrameResult result = kernel.run(frame);
  if (result.verdict != XDP_REDIRECT) {
    if (result.verdict == XDP_PASS && result.frame != frame) return {"passed on, but changed", {}};
    const std::string reason = reasonSince(before);
    const bool isPassed = reason == "ttlExpired" || reason.front() == 't';
    if (result.verdict != (isPassed ? XDP_PASS : XDP_DROP))
      return {"verdict " + std::to_string(result.verdict) + " for " + reason, {}};
    return {reason, {}};
  }
  const std::size_t number = result.frame.at(5);
  const std::uint32_t vlan = kernel.nextHops[number].vlan;
  Bytes expected;
  append(expected, {0, 0, static_cast<std::uint32_t>(number), 0, 0, 0xaa});
  if (vlan != 0) append(expected, {0x8100, vlan});
  const auto body = result.frame.begin() + static_cast<std::ptrdiff_t>(expected.size()) + 2;
  const Bytes left(body, result.frame.end());
  append(expected, {typeOf(left)});
  if (!std::equal(expected.begin(), expected.end(), result.frame.begin()))
    return {"a wrong frame", result.frame};
  return {"by " + egresses_.at(number), left};
}

std::array<ZelCounter, zelReasons> TwoChips::reasons() const {
  std::array<ZelCounter, zelReasons> counters{};
  for (std::uint32_t reason = 0; reason < zelReasons; ++reason)
    counters.at(reason) = kernel.reasonCounters.sum(reason);
  return counters;
}

std::string TwoChips::reasonSince(const std::array<ZelCounter, zelReasons>& before) const {
  std::string changed;
  for (std::uint32_t reason = 0; reason < zelReasons; ++reason) {
    if (kernel.reasonCounters.sum(reason).packets != before.at(reason).packets)
      changed += nameOf(reason);
  }
  return changed.empty() ? "no reason" : changed;
}

std::string TwoChips::softCounters() {
  std::ostringstream text;
  for (std::uint32_t reason = 0; reason < Chips::dropReasons; ++reason) {
    const auto counter = soft.forwarder.dropCounter(static_cast<DropReason>(reason));
    text << nameOf(reason) << ' ' << counter.packets << ' ' << counter.bytes << '\n';
  }
  std::map<std::uint32_t, Chips::PacketCounter> vrfs;
  for (const auto& [vrf, counter] : soft.forwarder.vrfCounters())
    vrfs[soft.routes->vrfStatus(vrf)->vrfId()] = counter;
  for (const auto& [vrf, counter] : vrfs)
    text << "vrf " << vrf << ' ' << counter.packets << ' ' << counter.bytes << '\n';
  for (const auto& [name, intf] : intfs_) {
    for (std::size_t place = 0; place < intf.counters.size(); ++place) {
      const Chips::PacketCounter counter = soft.acl->counter(Velo::String(name), place);
      text << "rule of " << name << ' ' << counter.packets << ' ' << counter.bytes << '\n';
    }
  }
  return text.str();
}

std::string TwoChips::kernelCounters() {
  std::ostringstream text;
  for (std::uint32_t reason = 0; reason < Chips::dropReasons; ++reason) {
    const ZelCounter counter = kernel.reasonCounters.sum(reason);
    text << nameOf(reason) << ' ' << counter.packets << ' ' << counter.bytes << '\n';
  }
  for (std::uint32_t vrf = 0; vrf < PlaneSizes{}.vrfs; ++vrf) {
    const ZelCounter counter = kernel.vrfCounters.sum(vrf);
    if (counter.packets != 0)
      text << "vrf " << vrf << ' ' << counter.packets << ' ' << counter.bytes << '\n';
  }
  for (const auto& [name, intf] : intfs_) {
    for (const std::uint32_t number : intf.counters) {
      const ZelCounter counter = kernel.ruleCounters.sum(number);
      text << "rule of " << name << ' ' << counter.packets << ' ' << counter.bytes << '\n';
    }
  }
  return text.str();
}

}  // namespace KernelChip
