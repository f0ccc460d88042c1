#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

/// A JSON document whose members stay in the order of their insertion.
using OrderedJson = nlohmann::ordered_json;

/// The action on one line, with every field that is set. Names are words of event files:
/// "actionVrf red", "actionDecapVrf decap fallback transit post-decap default".
[[nodiscard]] std::string toText(const VrfAction& action);

/// Prints the title, a table with one row for each action, and lines for the chip and its rule
/// entries. Names are printable; absent ones are "-".
void writeTextReport(std::ostream& out, const std::string& title, const AgentState& state);

/// Prints the program of each resource, in the order of the actions, on two lines. A stale resource
/// has a third line with the program that an update would write.
void writeResourceReport(std::ostream& out, const AgentState& state);

/// Prints the report as one JSON document on one line. Its members are:
///
///   configuration   the file that was applied; null after everything was removed
///   actions         array, in the order of their names, of
///     vrfName, fallbackVrfName, postDecapVrfName   strings, empty for none
///     action                                       "actionVrf" or "actionDecapVrf"
///     users                                        number of users counted
///     usedBy       array of {interface, networkInstance, policy, rule}
///     status, failureReason, failureDescription    strings
///     resource     null, or {index, current, lookUp, fallback, postDecap, decapNhEnabled,
///                  decapNhFallbackEnabled}; lookUp, fallback and postDecap are arrays of
///                  {vrfName, vrfId, exactMatchLens, exactMatchLensV6}; current is false if an
///                  update would write another program
///   chip            {capacity, used, creates, updates, deletes, failures}
///   ruleTable       {capacity, used, mostUsed, refused}
void writeJsonReport(std::ostream& out, const std::optional<std::string>& configuration,
                     const AgentState& state);

/// Adds the members `actions`, `chip` and `ruleTable` to the report.
void putState(OrderedJson& report, const AgentState& state);

/// The members that name an action.
[[nodiscard]] OrderedJson nameJson(const VrfAction& action);
/// The members of a user of an action.
[[nodiscard]] OrderedJson userJson(const ActionUser& user);
/// The members of a status.
[[nodiscard]] OrderedJson statusJson(const ZelVrfSelectionPolicy::HwStatus& status);

/// The document without a line end. Bytes of names that are not UTF-8 are replaced.
[[nodiscard]] std::string oneLine(const OrderedJson& document);

}  // namespace ZelAgent
