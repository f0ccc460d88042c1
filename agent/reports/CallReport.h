#pragma once

#include <string>

#include "agent/model/calls/ChipCalls.h"
#include "agent/reports/StateReport.h"
#include "chips/interface/ChipVrfHelper.h"

namespace ZelAgent {

/// A call of the chip on one line. A hook call has the program that it asks for. `chip` is the chip
/// that the call was made to.
///
///     createVrf actionVrf red: look up red(2) v4=[] v6=[]; fallback none; ...
///     addRule Ethernet1 at 0: ipv4 dscp 10, actionVrf red
///     moveRule Ethernet1 from 2 to 0: ipv4 dscp 10, actionVrf red
///     setRoute VRF id 2, 10.0.0.0/8 via Ethernet1
[[nodiscard]] std::string toText(const ChipCall& call, const Chips::ChipVrfHelper& chip);

/// The same as an object. Its member `call` is "createVrf", "updateVrf", "deleteVrf", "addRule",
/// "replaceRule", "moveRule", "removeRule", "setRoute" or "removeRoute".
///
///   hook calls   the members that name the action, failed, program (null for a deletion)
///   rules        interface, place, to (of a move), match, action, refused
///   routes       vrfId, prefix, route ("decap", "drop" or "via INTERFACE"; absent for a removal)
[[nodiscard]] OrderedJson toJson(const ChipCall& call, const Chips::ChipVrfHelper& chip);

}  // namespace ZelAgent
