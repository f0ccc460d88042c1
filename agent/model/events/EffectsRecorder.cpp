#include "agent/model/events/EffectsRecorder.h"

#include <utility>
#include <variant>

#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

EffectsRecorder::EffectsRecorder(ForwardingAgent& agent) : agent_(agent) {
  agent_.chipObserverIs(
      [this](const ChipCall& call) { std::visit([this](const auto& one) { take(one); }, call); });
}

EffectsRecorder::~EffectsRecorder() {
  agent_.chipObserverIs({});
}

EventEffects EffectsRecorder::take() {
  for (auto& [action, before] : before_) {
    const auto after = agent_.status(action);
    if (before != after) effects_.statusChanges.push_back({action, std::move(before), after});
  }
  rules_.addTo(effects_.counts, agent_);
  return std::move(effects_);
}

void EffectsRecorder::take(const Chips::HookCall& call) {
  ChangeCounts& counts = effects_.counts;
  switch (call.hook) {
    case Chips::Hook::createVrf:
      ++counts.creates;
      break;
    case Chips::Hook::updateVrf:
      ++counts.updates;
      break;
    case Chips::Hook::deleteVrf:
      ++counts.deletes;
      break;
  }
  if (call.failed) ++counts.failures;
  if (!before_.contains(call.action)) before_.emplace(call.action, agent_.status(call.action));
  effects_.calls.push_back(call);
}

void EffectsRecorder::take(const RouteCall& call) {
  ++(call.route == nullptr ? effects_.counts.routesRemoved : effects_.counts.routesSet);
}

}  // namespace ZelAgent
