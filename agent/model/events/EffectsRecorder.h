#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "agent/model/calls/ChipCalls.h"
#include "agent/model/events/ChangeCounts.h"
#include "agent/model/events/RuleChangeCounter.h"
#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

class ForwardingAgent;

struct StatusChange {
  VrfAction action;
  std::optional<ZelVrfSelectionPolicy::HwStatus> before;  // none: the action had no status
  std::optional<ZelVrfSelectionPolicy::HwStatus> after;   // none: the action has no status now

  bool operator==(const StatusChange&) const = default;
};

/// What an event or another change caused. Hook calls are in the order in which the chip received
/// them. Status changes compare the end of the change with its start, in the order of the actions.
struct EventEffects {
  std::vector<Chips::HookCall> calls;
  std::vector<StatusChange> statusChanges;
  std::vector<std::string> warnings;  // of a configuration that was read
  ChangeCounts counts;
};

/// Records what a change causes, until it is destroyed. Its work is in proportion to the calls of
/// the chip. An agent has at most one at a time.
class EffectsRecorder final {
 public:
  /// The agent must outlive the recorder.
  explicit EffectsRecorder(ForwardingAgent& agent);
  EffectsRecorder(const EffectsRecorder&) = delete;
  EffectsRecorder& operator=(const EffectsRecorder&) = delete;
  ~EffectsRecorder();

  /// What has happened so far. Call it once.
  [[nodiscard]] EventEffects take();

 private:
  void take(const Chips::HookCall& call);
  void take(const RuleCall& call) { rules_.take(call); }
  void take(const RouteCall& call);

  ForwardingAgent& agent_;
  EventEffects effects_;
  RuleChangeCounter rules_;
  // The status of each action before its first hook call. Only hook calls change statuses.
  std::map<VrfAction, std::optional<ZelVrfSelectionPolicy::HwStatus>> before_;
};

}  // namespace ZelAgent
