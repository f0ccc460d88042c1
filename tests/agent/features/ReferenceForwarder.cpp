#include "tests/agent/features/ReferenceForwarder.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace ZelAgent {
namespace {

// A VRF, its fallback, and the fallback's own.
constexpr std::size_t longestWalk = 3;

// Whether the number is in one of the ranges. Without a range every number is.
bool isInAny(const std::vector<PolicyMap::NumberRange>& ranges,
             const std::optional<std::size_t>& number) {
  if (ranges.empty()) return true;
  for (const PolicyMap::NumberRange& range : ranges) {
    if (number && *number >= range.first && *number <= range.last) return true;
  }
  return false;
}

// For each flag that counts, whether it is set must be as it is written.
bool hasFlags(std::uint8_t flags, const PolicyMap::TcpFlagsMatch& wanted) {
  for (unsigned flag = 1; flag < 256; flag *= 2) {
    const bool counts = (wanted.mask & flag) != 0;
    if (counts && ((flags & flag) != 0) != ((wanted.value & flag) != 0)) return false;
  }
  return true;
}

bool matchesTransport(const RuleMatch& match, const ReferenceHeader& header) {
  if (!isInAny(match.sourcePorts, header.sourcePort)) return false;
  if (!isInAny(match.destinationPorts, header.destinationPort)) return false;
  if (match.tcpFlags.empty()) return true;
  for (const PolicyMap::TcpFlagsMatch& wanted : match.tcpFlags) {
    if (header.tcpFlags && hasFlags(*header.tcpFlags, wanted)) return true;
  }
  return false;
}

// The policies of an interface, in the order in which they are tried.
std::vector<const Policy*> policiesOf(const NetworkInstance& instance,
                                      const PolicyBinding& binding) {
  std::vector<const Policy*> policies;
  for (const std::string& id : {binding.policyId, binding.forwardingPolicyId}) {
    for (const Policy& policy : instance.policies) {
      if (policy.policyId == id) policies.push_back(&policy);
    }
  }
  return policies;
}

void add(ReferenceCount& count, std::size_t bytes) {
  ++count.packets;
  count.bytes += bytes;
}

ReferenceVerdict verdictOfDrop(const std::string& reason) {
  return {reason, "", {}};
}

}  // namespace

ReferenceForwarder::ReferenceForwarder(Configuration configuration, std::uint32_t chipCapacity)
    : configuration_(std::move(configuration)), capacity_(chipCapacity) {
  std::uint32_t id = 0;
  for (const NetworkInstance& instance : configuration_.networkInstances) {
    ids_[instance.name] = ++id;
    if (!instance.fallback.empty()) fallbacks_[instance.name] = instance.fallback;
    routes_[instance.name].configure(instance.staticRoutes);
    for (const PolicyBinding& binding : instance.policyBindings) {
      for (const Policy* const policy : policiesOf(instance, binding)) {
        for (const Rule& rule : policy->rules)
          counters_.rules[{binding.interface, policy->policyId, rule.sequenceId}] = {};
      }
    }
  }
}

void ReferenceForwarder::play(const Event& event) {
  std::visit([this](const auto& one) { change(one); }, event);
}

void ReferenceForwarder::change(const SetPrefixLens& event) {
  lengths_[event.vrf][event.family] = event.lengths;
}

void ReferenceForwarder::change(const RemovePrefixLens& event) {
  lengths_[event.vrf].erase(event.family);
}

void ReferenceForwarder::change(const ApplyConfig&) {
  throw std::logic_error("the reference knows one configuration");
}

void ReferenceForwarder::change(const PlanChipFaults& event) {
  (event.vrf ? faults_[*event.vrf] : anyFaults_) = event.count;
}

void ReferenceForwarder::change(const SetDecapRoute& event) {
  routes_[event.vrf].set({event.prefix, ReferenceWay::decapsulates, ""});
}

void ReferenceForwarder::change(const SetEgressRoute& event) {
  routes_[event.vrf].set({event.prefix, ReferenceWay::leaves, event.interface});
}

std::string ReferenceForwarder::called(const Chips::HookCall& call) {
  const ReferenceAction action{call.action.vrfName().str(), call.action.fallbackVrfName().str(),
                               call.action.postDecapVrfName().str(),
                               call.action.action() == PolicyMap::ActionType::decapVrf};
  if (call.hook == Chips::Hook::deleteVrf) {
    programs_.erase(action);
    return "";
  }
  const bool mustFail = failsByPlan(std::get<0>(action)) || !program(action);
  if (call.failed == mustFail) return "";
  return mustFail ? "a call of the chip should have failed" : "a call of the chip failed";
}

// A planned fault comes before anything else: what was programmed stays.
bool ReferenceForwarder::failsByPlan(const std::string& vrf) {
  std::uint32_t& ofVrf = faults_[vrf];
  std::uint32_t& planned = ofVrf != 0 ? ofVrf : anyFaults_;
  if (planned == 0) return false;
  --planned;
  return true;
}

bool ReferenceForwarder::program(const ReferenceAction& action) {
  if (namesVrfWithoutId(action)) {
    programs_.erase(action);
    return false;
  }
  if (!programs_.contains(action) && programs_.size() >= capacity_) return false;
  programs_[action] = programOf(action);
  return true;
}

std::set<ReferenceAction> ReferenceForwarder::programmedActions() const {
  std::set<ReferenceAction> actions;
  for (const auto& [action, program] : programs_)
    actions.insert(action);
  return actions;
}

bool ReferenceForwarder::namesVrfWithoutId(const ReferenceAction& action) const {
  const auto& [vrf, fallback, postDecap, decapsulates] = action;
  for (const std::string& name : {vrf, fallback, postDecap}) {
    if (!name.empty() && factsOf(name).id == 0) return true;
  }
  return false;
}

ReferenceForwarder::VrfFacts ReferenceForwarder::factsOf(const std::string& vrf) const {
  VrfFacts facts{vrf, 0, {}};
  if (const auto id = ids_.find(vrf); id != ids_.end()) facts.id = id->second;
  if (const auto lengths = lengths_.find(vrf); lengths != lengths_.end()) {
    facts.lengths = lengths->second;
  }
  return facts;
}

ReferenceForwarder::Walk ReferenceForwarder::walkFrom(std::string vrf) const {
  Walk walk;
  std::set<std::string> passed;
  while (!vrf.empty() && walk.size() < longestWalk && passed.insert(vrf).second) {
    walk.push_back(factsOf(vrf));
    const auto fallback = fallbacks_.find(vrf);
    vrf = fallback == fallbacks_.end() ? "" : fallback->second;
  }
  return walk;
}

ReferenceForwarder::Program ReferenceForwarder::programOf(const ReferenceAction& action) const {
  const auto& [vrf, fallback, postDecap, decapsulates] = action;
  return {walkFrom(vrf), walkFrom(fallback), walkFrom(postDecap), decapNh_, decapNhFallback_};
}

ReferenceForwarder::Program ReferenceForwarder::ownVrfOf(const std::string& interface) const {
  for (const NetworkInstance& instance : configuration_.networkInstances) {
    const auto& own = instance.interfaces;
    if (std::find(own.begin(), own.end(), interface) != own.end()) {
      return programOf({instance.name, "", "", false});
    }
  }
  return programOf({defaultVrfName, "", "", false});
}

// Of VRFs with one id the later name has the last word.
void ReferenceForwarder::makeTables() {
  tables_.clear();
  for (const auto& [vrf, id] : ids_) {
    if (id == 0) continue;
    Table& table = tables_[id];
    for (const ReferenceRoute& route : routes_[vrf].usable()) {
      std::erase_if(table.routes, [&](const auto& other) { return other.prefix == route.prefix; });
      table.routes.push_back(route);
    }
    table.lengths = factsOf(vrf).lengths;
  }
}

ReferenceVerdict ReferenceForwarder::forward(const std::string& interface,
                                             const PacketBytes& packet) {
  const ReferenceParsed parsed = readHeader(packet);
  const ReferenceVerdict verdict =
      parsed.header ? select(interface, packet, *parsed.header) : verdictOfDrop(parsed.fault);
  if (!verdict.drop.empty()) {
    add(counters_.drops[verdict.drop], parsed.header ? parsed.header->totalLength : packet.size());
  }
  return verdict;
}

bool ReferenceForwarder::isInSet(const std::string& set, const IpAddress& address) const {
  bool isIn = false;
  for (const PrefixSet& candidate : configuration_.prefixSets) {
    if (candidate.name != set || candidate.family != address.family) continue;
    for (const IpPrefix& prefix : candidate.prefixes)
      isIn = isIn || covers(prefix, address);
    for (const IpPrefix& prefix : candidate.excluded)
      isIn = isIn && !covers(prefix, address);
  }
  return isIn;
}

bool ReferenceForwarder::matches(const RuleMatch& match, const ReferenceHeader& header) const {
  if (match.family && *match.family != header.family) return false;
  if (match.protocol && *match.protocol != header.protocol) return false;
  if (match.dscp && *match.dscp != header.dscp) return false;
  const auto& set = match.dscpSet;
  if (!set.empty() && std::find(set.begin(), set.end(), header.dscp) == set.end()) return false;
  if (match.source && !covers(*match.source, header.source)) return false;
  if (match.destination && !covers(*match.destination, header.destination)) return false;
  if (!match.sourceSet.empty() && !isInSet(match.sourceSet, header.source)) return false;
  if (!match.destinationSet.empty() && !isInSet(match.destinationSet, header.destination))
    return false;
  if (match.hopLimit && *match.hopLimit != header.ttl) return false;
  if (match.length && *match.length != header.totalLength) return false;
  if (match.isFragment && !header.isFragment) return false;
  if (!isInAny(match.fragmentOffsets, header.fragmentOffset)) return false;
  return matchesTransport(match, header);
}

std::pair<const Rule*, std::string> ReferenceForwarder::firstRuleFor(
    const std::string& interface, const ReferenceHeader& header) const {
  for (const NetworkInstance& instance : configuration_.networkInstances) {
    for (const PolicyBinding& binding : instance.policyBindings) {
      if (binding.interface != interface) continue;
      for (const Policy* const policy : policiesOf(instance, binding)) {
        for (const Rule& rule : policy->rules) {
          if (matches(rule.match, header)) return {&rule, policy->policyId};
        }
      }
    }
  }
  return {nullptr, ""};
}

ReferenceVerdict ReferenceForwarder::select(const std::string& interface, const PacketBytes& packet,
                                            const ReferenceHeader& header) {
  const auto [rule, policyId] = firstRuleFor(interface, header);
  if (rule == nullptr) return send(interface, ownVrfOf(interface), packet, header);
  add(counters_.rules[{interface, policyId, rule->sequenceId}], header.totalLength);
  if (std::holds_alternative<NoAction>(rule->action)) {
    return send(interface, ownVrfOf(interface), packet, header);
  }
  if (std::holds_alternative<Discard>(rule->action)) return verdictOfDrop("discardedByRule");
  ReferenceAction action;
  if (const auto* const lookUp = std::get_if<LookUp>(&rule->action)) {
    action = {lookUp->vrf, "", "", false};
  } else {
    const auto& decap = std::get<Decapsulate>(rule->action);
    action = {decap.decapVrf, decap.fallbackVrf, decap.postDecapVrf, true};
  }
  const auto program = programs_.find(action);
  if (program == programs_.end()) return verdictOfDrop("noVrfResource");
  return send(interface, program->second, packet, header);
}

ReferenceVerdict ReferenceForwarder::send(const std::string& interface, const Program& program,
                                          const PacketBytes& packet,
                                          const ReferenceHeader& header) {
  Walk walk = program.lookUp;
  walk.insert(walk.end(), program.fallback.begin(), program.fallback.end());
  const Found found = search(walk, program, header.destination, false);
  if (found.route == nullptr) return verdictOfDrop(found.drop);
  if (found.route->way != ReferenceWay::decapsulates) return leaveBy(found, packet, header);
  const ReferenceInner inside = takeOutOfTunnel(packet, header);
  if (!inside.fault.empty()) return verdictOfDrop(inside.fault);
  const ReferenceHeader inner = readHeader(inside.packet).header.value();
  const Walk postDecap = program.postDecap.empty() ? ownVrfOf(interface).lookUp : program.postDecap;
  const Found innerFound = search(postDecap, program, inner.destination, true);
  if (innerFound.route == nullptr) return verdictOfDrop(innerFound.drop);
  return leaveBy(innerFound, inside.packet, inner);
}

ReferenceForwarder::Found ReferenceForwarder::search(const Walk& walk, const Program& flags,
                                                     const IpAddress& destination,
                                                     bool isBehindTunnel) const {
  std::set<std::string> tried;
  bool hasTable = false;
  for (const VrfFacts& vrf : walk) {
    if (!tried.insert(vrf.name).second || vrf.id == 0) continue;
    hasTable = true;
    const auto table = tables_.find(vrf.id);
    if (table == tables_.end()) continue;
    const auto lengthsIn = [&](const Lengths& lengths) {
      const auto found = lengths.find(destination.family);
      return found == lengths.end() ? std::set<std::uint8_t>() : found->second;
    };
    const ReferenceRoute* const route =
        longestFor(destination, table->second.routes, lengthsIn(table->second.lengths),
                   lengthsIn(vrf.lengths));
    if (route == nullptr) continue;
    if (route->way != ReferenceWay::decapsulates) return {route, vrf.name, ""};
    if (isBehindTunnel) return {nullptr, "", "nestedDecap"};
    if (flags.decapNh) return {route, vrf.name, ""};
    if (!flags.decapNhFallback) return {nullptr, "", "decapDisabled"};
  }
  return {nullptr, "", hasTable ? "noRoute" : "noVrfId"};
}

ReferenceVerdict ReferenceForwarder::leaveBy(const Found& found, const PacketBytes& packet,
                                             const ReferenceHeader& header) {
  if (found.route->way == ReferenceWay::drops) return verdictOfDrop("dropRoute");
  const auto asItLeaves = leaving(packet, header);
  if (!asItLeaves) return verdictOfDrop("ttlExpired");
  add(counters_.vrfs[found.vrf], asItLeaves->size());
  return {"", found.route->interface, *asItLeaves};
}

}  // namespace ZelAgent
