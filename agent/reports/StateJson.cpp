#include "agent/reports/StateJson.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace ZelAgent {
namespace {

OrderedJson walkJson(const SoftChip::VrfWalk& walk) {
  OrderedJson json = OrderedJson::array();
  for (const SoftChip::VrfFacts& facts : walk) {
    json.push_back({{"vrfName", facts.name.str()},
                    {"vrfId", facts.vrfId},
                    {"exactMatchLens", facts.exactMatchLens},
                    {"exactMatchLensV6", facts.exactMatchLensV6}});
  }
  return json;
}

OrderedJson resourceJson(const ActionState& state) {
  if (!state.resource) return nullptr;
  const SoftChip::VrfProgram& program = state.resource->program;
  return {{"index", state.resource->index},
          {"current", !state.resourceIsStale()},
          {"lookUp", walkJson(program.lookUp)},
          {"fallback", walkJson(program.fallback)},
          {"postDecap", walkJson(program.postDecap)},
          {"decapNhEnabled", program.decapNhEnabled},
          {"decapNhFallbackEnabled", program.decapNhFallbackEnabled}};
}

OrderedJson usersJson(const std::set<ActionUser>& users) {
  OrderedJson json = OrderedJson::array();
  for (const ActionUser& user : users)
    json.push_back(userJson(user));
  return json;
}

OrderedJson actionJson(const ActionState& state) {
  OrderedJson json = nameJson(state.action);
  json["users"] = state.users;
  json["usedBy"] = usersJson(state.usedBy);
  json.update(statusJson(state.status));
  json["resource"] = resourceJson(state);
  return json;
}

OrderedJson chipJson(const ChipState& chip) {
  return {{"capacity", chip.capacity},          {"used", chip.used},
          {"creates", chip.hookCounts.creates}, {"updates", chip.hookCounts.updates},
          {"deletes", chip.hookCounts.deletes}, {"failures", chip.hookCounts.failures}};
}

}  // namespace

OrderedJson nameJson(const VrfAction& action) {
  return {{"vrfName", action.vrfName().str()},
          {"fallbackVrfName", action.fallbackVrfName().str()},
          {"postDecapVrfName", action.postDecapVrfName().str()},
          {"action", stringValue(action.action()).str()}};
}

OrderedJson userJson(const ActionUser& user) {
  return {{"interface", user.interface},
          {"networkInstance", user.networkInstance},
          {"policy", user.policyId},
          {"rule", user.sequenceId}};
}

OrderedJson statusJson(const ZelVrfSelectionPolicy::HwStatus& status) {
  return {{"status", stringValue(status.status()).str()},
          {"failureReason", stringValue(status.failureReason()).str()},
          {"failureDescription", status.failureDescription().str()}};
}

void putState(OrderedJson& report, const AgentState& state) {
  OrderedJson actions = OrderedJson::array();
  for (const ActionState& action : state.actions)
    actions.push_back(actionJson(action));
  report["actions"] = std::move(actions);
  report["chip"] = chipJson(state.chip);
}

std::string oneLine(const OrderedJson& document) {
  return document.dump(-1, ' ', false, OrderedJson::error_handler_t::replace);
}

}  // namespace ZelAgent
