#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "agent/config/Findings.h"
#include "agent/model/events/Event.h"
#include "agent/model/policies/VrfActions.h"
#include "chips/soft/HookCall.h"

namespace ZelAgent {

class ForwardingAgent;

struct StatusChange {
  VrfAction action;
  std::optional<ZelVrfSelectionPolicy::HwStatus> before;  // none: the action had no status
  std::optional<ZelVrfSelectionPolicy::HwStatus> after;   // none: the action has no status now

  bool operator==(const StatusChange&) const = default;
};

/// What an event caused. Hook calls are in the order in which the chip received them. Status
/// changes compare the end of the event with its start, in the order of the actions.
struct EventEffects {
  std::vector<SoftChip::HookCall> calls;
  std::vector<StatusChange> statusChanges;
  std::vector<std::string> warnings;  // of a configuration that was read
};

/// Plays events on a running agent. Each event but `show` ends with a step of the agent's recovery.
class EventPlayer final {
 public:
  /// The agent must outlive the player. Files that events name are in `folder`.
  EventPlayer(ForwardingAgent& agent, std::filesystem::path folder,
              Leniency leniency = Leniency::strict)
      : agent_(agent), folder_(std::move(folder)), leniency_(leniency) {}

  /// Throws an `EventError` for an event that cannot be played. Such an event changes nothing.
  EventEffects play(const Event& event);

 private:
  ForwardingAgent& agent_;
  std::filesystem::path folder_;
  Leniency leniency_;  // of configurations that events name
};

}  // namespace ZelAgent
