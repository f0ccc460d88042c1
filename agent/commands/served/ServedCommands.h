#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// The commands that a daemon serves. The table of commands has their forms and help. Those that
// show change nothing.

/// `show actions`: the table of actions below the name of the file in force. As JSON it has the
/// members of a report.
[[nodiscard]] CommandOutput showActions(const CommandCall& call);
/// `show users`, `show rules`, `show counters`: as RuleReport.h and CounterReport.h describe them.
[[nodiscard]] CommandOutput showUsers(const CommandCall& call);
[[nodiscard]] CommandOutput showRules(const CommandCall& call);
[[nodiscard]] CommandOutput showCounters(const CommandCall& call);
/// `show vrfs`: one row for each VRF that the agent knows of.
[[nodiscard]] CommandOutput showVrfs(const CommandCall& call);
/// `show fallback`: the graph of the present fallbacks and actions.
[[nodiscard]] CommandOutput showFallback(const CommandCall& call);
/// `show config`: the file in force, and the outcome of the last reload.
[[nodiscard]] CommandOutput showConfig(const CommandCall& call);
/// `show trace [N]`: the last messages of this process, oldest first. It writes no message itself.
[[nodiscard]] CommandOutput showTrace(const CommandCall& call);
/// `show types`: every module that is registered now, in the order of registration.
[[nodiscard]] CommandOutput showTypes(const CommandCall& call);

/// `get TYPE ATTRIBUTE [KEY...]`: the attribute, by its name or number, of every object of the
/// type. The type is given by its whole name, or by the end of its name if it has attributes. KEY,
/// a name or a string form, picks one of several objects; of a single object it picks one entry of
/// a collection. As JSON it is an array of {object, value}.
[[nodiscard]] CommandOutput getAttribute(const CommandCall& call);

/// `reload`: answers as `show actions` does, with the warnings of the file in front or as the
/// member `warnings`. Throws a `ConfigError` for a file that is wrong, which changes nothing.
[[nodiscard]] CommandOutput reload(const CommandCall& call);
/// An event, read and played exactly as from a file of events.
[[nodiscard]] CommandOutput playEvent(const CommandCall& call);
/// `explain INTERFACE PACKET`, the packet as PacketText.h describes it. It changes nothing but the
/// counters, which count the packet.
[[nodiscard]] CommandOutput explainPacket(const CommandCall& call);

/// `help [WORD...]`: a line for each form that begins with the words.
[[nodiscard]] CommandOutput help(const CommandCall& call);
/// `complete LINE`: what the last word of the line may become; after a blank, what may follow. One
/// line for each, sorted, as it can stand in the line. As JSON it is an array.
[[nodiscard]] CommandOutput complete(const CommandCall& call);

}  // namespace ZelAgent
