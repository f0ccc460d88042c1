#pragma once

#include "agent/commands/served/CommandCall.h"

namespace ZelAgent {

// The commands that a daemon serves. The table of commands has their forms and help. The show
// commands change nothing. Commands that change the agent wait for a change in progress, except
// `clear counters`, which sets the counters to 0 at once.

/// `show actions`: the name of the file in force and the table of actions. As JSON it has the
/// members that StateReport.h describes. With a filter it has only the actions that it selects.
[[nodiscard]] CommandOutput showActions(const CommandCall& call);
/// `show users`, `show rules`, `show counters`: as RuleReport.h and CounterReport.h describe them.
[[nodiscard]] ReportPagesPtr showUsers(const CommandCall& call);
[[nodiscard]] ReportPagesPtr showRules(const CommandCall& call);
[[nodiscard]] ReportPagesPtr showCounters(const CommandCall& call);
/// `show routes [VRF] [PREFIX]`: as RouteReport.h describes them. PREFIX selects the routes to it
/// and to the prefixes that it contains.
[[nodiscard]] ReportPagesPtr showRoutes(const CommandCall& call);
/// `show interfaces`, `show policies`: as InterfaceReport.h describes them.
[[nodiscard]] ReportPagesPtr showInterfaces(const CommandCall& call);
[[nodiscard]] ReportPagesPtr showPolicies(const CommandCall& call);
/// `show vrfs`: one row for each VRF that the agent knows.
[[nodiscard]] CommandOutput showVrfs(const CommandCall& call);
/// `show fallback`: the graph of the current fallbacks and actions.
[[nodiscard]] CommandOutput showFallback(const CommandCall& call);
/// `show config`: the file in force, and the results of reloads.
[[nodiscard]] CommandOutput showConfig(const CommandCall& call);
[[nodiscard]] CommandOutput clearCounters(const CommandCall& call);
[[nodiscard]] CommandOutput showVersion(const CommandCall& call);
/// `show limits`: the limits in force, as LimitsReport.h describes them.
[[nodiscard]] CommandOutput showLimits(const CommandCall& call);
/// `show trace [N]`: the last N messages of this process, oldest first. It adds no message.
[[nodiscard]] CommandOutput showTrace(const CommandCall& call);
/// `show types`: the registered modules and their types, in the order of registration.
[[nodiscard]] CommandOutput showTypes(const CommandCall& call);

/// `get TYPE ATTRIBUTE [KEY...]`: the attribute, by its name or number, of every object of the
/// type. The type is given by its whole name, or by the end of its name if it has attributes. KEY,
/// a name or a string form, selects one of several objects. Of a single object it selects an entry
/// of a collection. As JSON it is an array of {object, value}.
[[nodiscard]] CommandOutput getAttribute(const CommandCall& call);

/// `reload`: what has changed, as ChangeReport.h describes it, with the warnings of the file. A
/// wrong file changes nothing and is a `ConfigError`.
[[nodiscard]] AwaitedOutput reload(const CommandCall& call);
/// `diff`: what a reload would change in the configuration in force, with the warnings of the file.
/// Facts that events have changed are no part of a configuration.
[[nodiscard]] CommandOutput diff(const CommandCall& call);
/// An event, read and played as from an event file: what has changed, as ChangeReport.h describes
/// it.
[[nodiscard]] AwaitedOutput playEvent(const CommandCall& call);
/// `show`: as EventReport.h describes it.
[[nodiscard]] CommandOutput showState(const CommandCall& call);
/// `explain INTERFACE PACKET`: the path of a packet, written as PacketText.h describes. It changes
/// nothing, and no counter counts the packet. It waits while the rules of the interface are being
/// changed.
[[nodiscard]] AwaitedOutput explainPacket(const CommandCall& call);

/// `help [WORD...]`: a line for each form that begins with the words.
[[nodiscard]] CommandOutput help(const CommandCall& call);
/// `complete LINE`: the completions of the last word of the line; after a blank, the words that may
/// follow. One line each, sorted, quoted where necessary. As JSON it is an array. Of more than
/// `Limits::completions` words it has the first ones and the last.
[[nodiscard]] CommandOutput complete(const CommandCall& call);
/// `choices LINE`: what the last word of the line may be; after a blank, what may follow. One line
/// for each keyword and placeholder, with its help. "<cr>" stands for the end of the line. As JSON
/// it is an array of {choice, help}.
[[nodiscard]] CommandOutput choices(const CommandCall& call);

}  // namespace ZelAgent
