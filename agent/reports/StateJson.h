// Why: every JSON document of the agent shows its state in the same members.
// Always: members as JsonReport.h tells them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "agent/model/forwarding/AgentState.h"

namespace ZelAgent {

// Members stay in the order in which they were put in.
using OrderedJson = nlohmann::ordered_json;

// The members that name an action.
[[nodiscard]] OrderedJson nameJson(const VrfAction& action);
// The members that tell a user of an action.
[[nodiscard]] OrderedJson userJson(const ActionUser& user);
// The members that tell a status.
[[nodiscard]] OrderedJson statusJson(const ZelVrfSelectionPolicy::HwStatus& status);

// Puts the members `actions` and `chip` into the report.
void putState(OrderedJson& report, const AgentState& state);

// The document without a line end. Names are any bytes; those that are not UTF-8 are replaced.
[[nodiscard]] std::string oneLine(const OrderedJson& document);

}  // namespace ZelAgent
