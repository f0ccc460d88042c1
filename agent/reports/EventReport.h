#pragma once

#include <iosfwd>
#include <optional>

#include "agent/model/events/EventPlayer.h"
#include "agent/model/events/EventReader.h"
#include "agent/model/forwarding/AgentState.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// An event that was played, with what it caused.
///
/// A report has the event and its place in the file, if it has one; then the hook calls in order;
/// then the statuses that changed. As JSON it is one document on one line:
///
///   event      {file, line, text}; {text} if it was not read from a file
///   calls      array of hook calls, as EffectReport.h describes them
///   statuses   array of changes of a status, as EffectReport.h describes them
///   actions, chip   as StateReport.h describes them
struct PlayedEvent {
  std::optional<EventPlace> place;
  Event event;
  EventEffects effects;
};

/// For `show`, prints the table of actions and each resource of the chip instead of the calls.
void writeTextReport(std::ostream& out, const PlayedEvent& played, const AgentState& state);
[[nodiscard]] OrderedJson reportJson(const PlayedEvent& played, const AgentState& state);
void writeJsonReport(std::ostream& out, const PlayedEvent& played, const AgentState& state);

}  // namespace ZelAgent
