#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "agent/model/calls/ChipCalls.h"
#include "agent/model/policies/VrfActions.h"

namespace ZelAgent {

class ForwardingAgent;

struct StatusChange {
  VrfAction action;
  std::optional<ZelVrfSelectionPolicy::HwStatus> before;  // none: the action had no status
  std::optional<ZelVrfSelectionPolicy::HwStatus> after;   // none: the action has no status now

  bool operator==(const StatusChange&) const = default;
};

/// How many calls of each kind a change made.
struct ChangeCounts {
  std::uint64_t creates = 0;
  std::uint64_t updates = 0;
  std::uint64_t deletes = 0;
  std::uint64_t failures = 0;  // of the creations and updates
  std::uint64_t rulesAdded = 0;
  std::uint64_t rulesReplaced = 0;
  std::uint64_t rulesMoved = 0;
  std::uint64_t rulesRemoved = 0;
  std::uint64_t rulesRefused = 0;  // to be added or to replace another one
  std::uint64_t routesSet = 0;
  std::uint64_t routesRemoved = 0;

  bool operator==(const ChangeCounts&) const = default;
};

/// What an event or another change caused. Hook calls are in the order in which the chip received
/// them. Status changes compare the end of the change with its start, in the order of the actions.
struct EventEffects {
  std::vector<SoftChip::HookCall> calls;
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
  void take(const SoftChip::HookCall& call);
  void take(const RuleCall& call);
  void take(const RouteCall& call);

  ForwardingAgent& agent_;
  EventEffects effects_;
  // The status of each action before its first hook call. Only hook calls change statuses.
  std::map<VrfAction, std::optional<ZelVrfSelectionPolicy::HwStatus>> before_;
};

}  // namespace ZelAgent
