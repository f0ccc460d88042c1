#pragma once

#include <string>

#include "agent/model/events/EffectsRecorder.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {

/// "updateVrf actionVrf red failed"
[[nodiscard]] std::string toText(const Chips::HookCall& call);
/// "status of actionVrf red: none -> programmedInHw"
[[nodiscard]] std::string toText(const StatusChange& change);
/// {hook, vrfName, fallbackVrfName, postDecapVrfName, action, failed}; hook is "createVrf",
/// "updateVrf" or "deleteVrf".
[[nodiscard]] OrderedJson toJson(const Chips::HookCall& call);
/// {vrfName, fallbackVrfName, postDecapVrfName, action, before, after}; the last two are null for
/// none, otherwise {status, failureReason, failureDescription}.
[[nodiscard]] OrderedJson toJson(const StatusChange& change);

}  // namespace ZelAgent
