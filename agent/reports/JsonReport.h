// Why: programs read what the agent did, too.
// Always: one JSON document on one line per report (JSON Lines). Its members:
//
//   configuration   the file that was applied; null for the report after everything was removed
//   actions         array, in the order of their names, of
//     vrfName, fallbackVrfName, postDecapVrfName   strings, empty where there is none
//     action                                       "actionVrf" or "actionDecapVrf"
//     users                                        number of users counted
//     usedBy       array of {interface, networkInstance, policy, rule}
//     status, failureReason, failureDescription    strings
//     resource     null, or {index, current, lookUp, fallback, postDecap, decapNhEnabled,
//                  decapNhFallbackEnabled}; the three walks are arrays of {vrfName, vrfId,
//                  exactMatchLens, exactMatchLensV6}; current is false where the chip would be
//                  programmed otherwise now
//   chip            {capacity, used, creates, updates, deletes, failures}
#pragma once

#include <iosfwd>
#include <optional>
#include <string>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

void writeJsonReport(std::ostream& out, const std::optional<std::string>& configuration,
                     const AgentState& state);

}  // namespace ZelAgent
