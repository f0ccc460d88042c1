#include "agent/reports/EffectReport.h"

#include <nlohmann/json.hpp>
#include <optional>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"

namespace ZelAgent {
namespace {

using Chips::Hook;
using Chips::HookCall;
using ZelVrfSelectionPolicy::HwStatus;
using ZelVrfSelectionPolicy::ProgrammingResult;

const char* hookName(Hook hook) {
  switch (hook) {
    case Hook::createVrf:
      return "createVrf";
    case Hook::updateVrf:
      return "updateVrf";
    case Hook::deleteVrf:
      break;
  }
  return "deleteVrf";
}

std::string statusText(const std::optional<HwStatus>& status) {
  if (!status) return "none";
  std::string result = stringValue(status->status()).str();
  if (status->status() == ProgrammingResult::programmedInHw) return result;
  return result + " (" + stringValue(status->failureReason()).str() + ": " +
         printable(status->failureDescription().bytes(), Limits::shownTextBytes) + ')';
}

OrderedJson optionalStatusJson(const std::optional<HwStatus>& status) {
  return status ? statusJson(*status) : OrderedJson(nullptr);
}

}  // namespace

std::string toText(const HookCall& call) {
  return std::string(hookName(call.hook)) + ' ' + toText(call.action) +
         (call.failed ? " failed" : "");
}

std::string toText(const StatusChange& change) {
  return "status of " + toText(change.action) + ": " + statusText(change.before) + " -> " +
         statusText(change.after);
}

OrderedJson toJson(const HookCall& call) {
  OrderedJson json;
  json["hook"] = hookName(call.hook);
  json.update(nameJson(call.action));
  json["failed"] = call.failed;
  return json;
}

OrderedJson toJson(const StatusChange& change) {
  OrderedJson json = nameJson(change.action);
  json["before"] = optionalStatusJson(change.before);
  json["after"] = optionalStatusJson(change.after);
  return json;
}

}  // namespace ZelAgent
