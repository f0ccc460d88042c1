// Why: an event is a change of one fact of a running agent.
// Always: an event that cannot be played is an EventError "FORM: WHAT" and changes nothing.
#pragma once

#include <filesystem>

#include "agent/model/events/Event.h"
#include "agent/model/events/EventEffects.h"
#include "agent/model/forwarding/ForwardingAgent.h"

namespace ZelAgent {

class EventPlayer final {
 public:
  // The agent outlives this; files that events name are looked for in `folder`.
  EventPlayer(ForwardingAgent& agent, std::filesystem::path folder)
      : agent_(agent), folder_(std::move(folder)) {}

  EventEffects play(const Event& event);

 private:
  ForwardingAgent& agent_;
  std::filesystem::path folder_;
};

}  // namespace ZelAgent
