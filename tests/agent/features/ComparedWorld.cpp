#include "tests/agent/features/ComparedWorld.h"

#include <sstream>

#include "agent/language/Errors.h"
#include "agent/model/events/EventPlayer.h"
#include "agent/reports/CounterReport.h"
#include "agent/reports/PathReport.h"

namespace ZelAgent {
namespace {

ReferenceAction plainly(const VrfAction& action) {
  return {action.vrfName().str(), action.fallbackVrfName().str(), action.postDecapVrfName().str(),
          action.action() == PolicyMap::ActionType::decapVrf};
}

ReferenceVerdict plainly(const Chips::Verdict& verdict) {
  if (verdict.drop) return {std::string(nameOf(*verdict.drop)), "", {}};
  return {"", verdict.egress, verdict.packet};
}

ReferenceCounters plainly(const ForwardCounters& counters) {
  ReferenceCounters plain;
  for (const RuleState& rule : counters.rules) {
    plain.rules[{rule.user.interface, rule.user.policyId, rule.user.sequenceId}] = {
        rule.counter.packets, rule.counter.bytes};
  }
  for (const auto& [vrf, counter] : counters.vrfs)
    plain.vrfs[vrf.str()] = {counter.packets, counter.bytes};
  for (const DropCount& drop : counters.drops)
    plain.drops[std::string(nameOf(drop.reason))] = {drop.counter.packets, drop.counter.bytes};
  return plain;
}

std::string shown(const ReferenceVerdict& verdict) {
  if (!verdict.drop.empty()) return "dropped: " + verdict.drop;
  return "leaves by " + verdict.egress + " as " + inHex(verdict.packet);
}

std::string line(const std::string& name, const ReferenceCount& count) {
  return "\n    " + name + ": " + std::to_string(count.packets) + " packets, " +
         std::to_string(count.bytes) + " bytes";
}

bool differs(const RandomWorld& world, const Sent& sent) {
  try {
    ComparedWorld compared(world);
    return !compared.send(sent).empty();
  } catch (const EventError&) {
    return false;  // an event lost what it stands on
  }
}

// Calls `visit` with each element of the list taken out, as long as it gives false.
template <class List, class Visit>
bool withoutEach(List& list, const Visit& visit) {
  for (std::size_t at = 0; at < list.size(); ++at) {
    const auto place = list.begin() + static_cast<std::ptrdiff_t>(at);
    const auto taken = *place;
    list.erase(place);
    if (visit()) return true;
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(at), taken);
  }
  return false;
}

bool takeAnythingOut(RandomWorld& world, const Sent& sent) {
  const auto stillDiffers = [&] { return differs(world, sent); };
  if (withoutEach(world.events, stillDiffers)) return true;
  for (NetworkInstance& instance : world.configuration.networkInstances) {
    if (withoutEach(instance.policyBindings, stillDiffers)) return true;
    for (Policy& policy : instance.policies) {
      if (withoutEach(policy.rules, stillDiffers)) return true;
    }
    if (withoutEach(instance.staticRoutes, stillDiffers)) return true;
    for (StaticRoute& route : instance.staticRoutes) {
      if (route.nextHops.size() > 1 && withoutEach(route.nextHops, stillDiffers)) return true;
    }
    if (withoutEach(instance.interfaces, stillDiffers)) return true;
    const std::string fallback = std::exchange(instance.fallback, "");
    if (!fallback.empty() && stillDiffers()) return true;
    instance.fallback = fallback;
  }
  return false;
}

}  // namespace

ComparedWorld::ComparedWorld(const RandomWorld& world)
    : agent_(world.chipCapacity), reference_(world.configuration, world.chipCapacity) {
  std::vector<Chips::HookCall> calls;
  agent_.chip().hookObserverIs([&calls](const Chips::HookCall& call) { calls.push_back(call); });
  agent_.apply(world.configuration);
  agent_.chip().hookObserverIs({});
  take(calls);
  EventPlayer player(agent_, ".");
  for (const Event& event : world.events) {
    reference_.play(event);
    take(player.play(event).calls);
  }
  reference_.makeTables();
  compareResources();
}

void ComparedWorld::take(const std::vector<Chips::HookCall>& calls) {
  for (const Chips::HookCall& call : calls) {
    const std::string wrong = reference_.called(call);
    if (wrong.empty()) continue;
    std::ostringstream text;
    text << wrong << ": " << call.action << '\n';
    disagreement_ += text.str();
  }
}

void ComparedWorld::compareResources() {
  std::set<ReferenceAction> programmed;
  for (const auto& [action, resource] : agent_.chip().resources())
    programmed.insert(plainly(action));
  if (programmed != reference_.programmedActions()) {
    disagreement_ += "the chip has resources for other actions than the reference\n";
  }
}

std::string ComparedWorld::send(const Sent& sent) {
  const auto fromAgent = plainly(agent_.forwarder().forward(sent.interface, sent.packet));
  const ReferenceVerdict wanted = reference_.forward(sent.interface, sent.packet);
  if (fromAgent == wanted) return "";
  return "  agent:     " + shown(fromAgent) + "\n  reference: " + shown(wanted) + '\n';
}

std::string ComparedWorld::compareCounters() {
  const ReferenceCounters fromAgent = plainly(countersOf(agent_));
  if (fromAgent == reference_.counters()) return "";
  return "  agent:" + ZelAgent::shown(fromAgent) +
         "\n  reference:" + ZelAgent::shown(reference_.counters()) + '\n';
}

std::string ComparedWorld::explanation(const Sent& sent) {
  return explain(agent_, sent.interface, sent.packet).text();
}

std::string inHex(const PacketBytes& packet) {
  static const char* const digits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : packet) {
    text += digits[byte / 16];
    text += digits[byte % 16];
  }
  return text;
}

std::string shown(const ReferenceCounters& counters) {
  std::string text;
  for (const auto& [rule, count] : counters.rules)
    text += line("rule " + std::to_string(std::get<2>(rule)) + " of " + std::get<1>(rule) + " on " +
                     std::get<0>(rule),
                 count);
  for (const auto& [vrf, count] : counters.vrfs)
    text += line("VRF " + vrf, count);
  for (const auto& [reason, count] : counters.drops)
    text += line(reason, count);
  return text;
}

RandomWorld smallestThatDiffers(RandomWorld world, const Sent& sent) {
  while (takeAnythingOut(world, sent)) {
  }
  return world;
}

}  // namespace ZelAgent
