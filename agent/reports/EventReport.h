// Why: each event of a story is shown with what it caused, so that cause and effect stand together.
// Always: the event stands at its place in the file, if it has one, then the calls of the chip in
// their order, then the statuses that changed. As JSON that is one document on one line:
//
//   event      {file, line, text}; {text} where it was not read from a file
//   calls      array of {hook, vrfName, fallbackVrfName, postDecapVrfName, action, failed}; hook is
//              "createVrf", "updateVrf" or "deleteVrf"
//   statuses   array of {vrfName, fallbackVrfName, postDecapVrfName, action, before, after}; these
//              two are null where there was or is none, otherwise {status, failureReason,
//              failureDescription}
//   actions, chip   as in every report
#pragma once

#include <iosfwd>
#include <optional>

#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateJson.h"

namespace ZelAgent {

struct PlayedEvent {
  std::optional<EventPlace> place;
  Event event;
  EventEffects effects;
};

// `show` also writes the table, and each resource of the chip in full.
void writeTextReport(std::ostream& out, const PlayedEvent& played, const AgentState& state);
[[nodiscard]] OrderedJson reportJson(const PlayedEvent& played, const AgentState& state);
void writeJsonReport(std::ostream& out, const PlayedEvent& played, const AgentState& state);

}  // namespace ZelAgent
