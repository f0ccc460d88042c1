#pragma once

#include <filesystem>
#include <utility>

#include "agent/config/Findings.h"
#include "agent/model/events/EffectsRecorder.h"
#include "agent/model/events/Event.h"

namespace ZelAgent {

class ForwardingAgent;

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
