#include "agent/render/JsonReport.h"

#include <nlohmann/json.hpp>
#include <ostream>

namespace ZelAgent {
namespace {

using Json = nlohmann::ordered_json;

Json walkJson(const SoftChip::VrfWalk& walk) {
  Json json = Json::array();
  for (const SoftChip::VrfFacts& facts : walk) {
    json.push_back({{"vrfName", facts.name.str()},
                    {"vrfId", facts.vrfId},
                    {"exactMatchLens", facts.exactMatchLens},
                    {"exactMatchLensV6", facts.exactMatchLensV6}});
  }
  return json;
}

Json resourceJson(const ActionState& state) {
  if (!state.resource) return nullptr;
  const SoftChip::VrfProgram& program = state.resource->program;
  return {{"index", state.resource->index},
          {"current", state.resourceIsCurrent},
          {"lookUp", walkJson(program.lookUp)},
          {"fallback", walkJson(program.fallback)},
          {"postDecap", walkJson(program.postDecap)},
          {"decapNhEnabled", program.decapNhEnabled},
          {"decapNhFallbackEnabled", program.decapNhFallbackEnabled}};
}

Json usersJson(const std::set<ActionUser>& users) {
  Json json = Json::array();
  for (const ActionUser& user : users) {
    json.push_back({{"interface", user.interface},
                    {"networkInstance", user.networkInstance},
                    {"policy", user.policyId},
                    {"rule", user.sequenceId}});
  }
  return json;
}

Json actionJson(const ActionState& state) {
  return {{"vrfName", state.action.vrfName().str()},
          {"fallbackVrfName", state.action.fallbackVrfName().str()},
          {"postDecapVrfName", state.action.postDecapVrfName().str()},
          {"action", stringValue(state.action.action()).str()},
          {"users", state.users},
          {"usedBy", usersJson(state.usedBy)},
          {"status", stringValue(state.status.status()).str()},
          {"failureReason", stringValue(state.status.failureReason()).str()},
          {"failureDescription", state.status.failureDescription().str()},
          {"resource", resourceJson(state)}};
}

Json chipJson(const ChipState& chip) {
  return {{"capacity", chip.capacity},          {"used", chip.used},
          {"creates", chip.hookCounts.creates}, {"updates", chip.hookCounts.updates},
          {"deletes", chip.hookCounts.deletes}, {"failures", chip.hookCounts.failures}};
}

// File names are any bytes; in JSON those that are not UTF-8 are replaced.
std::string oneLine(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

void writeJsonReport(std::ostream& out, const std::optional<std::string>& configuration,
                     const AgentState& state) {
  Json actions = Json::array();
  for (const ActionState& action : state.actions)
    actions.push_back(actionJson(action));
  Json report;
  report["configuration"] = configuration ? Json(*configuration) : Json(nullptr);
  report["actions"] = std::move(actions);
  report["chip"] = chipJson(state.chip);
  out << oneLine(report) << '\n';
}

}  // namespace ZelAgent
