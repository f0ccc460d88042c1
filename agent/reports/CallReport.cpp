#include "agent/reports/CallReport.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <string_view>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"
#include "agent/model/policies/PolicyObjects.h"
#include "agent/reports/EffectReport.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {
namespace {

using Chips::ChipVrfHelper;
using Chips::HookCall;
using Chips::Route;

const char* nameOf(RuleCall::Kind kind) {
  switch (kind) {
    case RuleCall::Kind::add:
      return "addRule";
    case RuleCall::Kind::replace:
      return "replaceRule";
    case RuleCall::Kind::move:
      return "moveRule";
    case RuleCall::Kind::remove:
      break;
  }
  return "removeRule";
}

const char* nameOf(const RouteCall& call) {
  return call.route == nullptr ? "removeRoute" : "setRoute";
}

std::string routeText(const Route& route) {
  switch (route.kind) {
    case Route::Kind::decap:
      return "decap";
    case Route::Kind::drop:
      return "drop";
    case Route::Kind::egress:
      break;
  }
  return "via " + toWord(route.intf);
}

// None for a deletion.
std::optional<std::string> programText(const HookCall& call, const ChipVrfHelper& chip) {
  const Chips::VrfProgram* const program = chip.askedPrograms().program(call.action);
  if (call.hook == Chips::Hook::deleteVrf || program == nullptr) return std::nullopt;
  std::ostringstream text;
  text << *program;
  return printable(text.str(), std::string_view::npos);
}

std::string placeText(const RuleCall& call) {
  const std::string place = std::to_string(call.place);
  if (call.kind == RuleCall::Kind::move) return " from " + place + " to " + std::to_string(call.to);
  return " at " + place;
}

class CallText final {
 public:
  explicit CallText(const ChipVrfHelper& chip) : chip_(chip) {}

  std::string operator()(const HookCall& call) const {
    const auto program = programText(call, chip_);
    return toText(call) + (program ? ": " + *program : "");
  }
  std::string operator()(const RuleCall& call) const {
    return std::string(nameOf(call.kind)) + ' ' +
           printable(call.intf.bytes(), Limits::shownTextBytes) + placeText(call) + ": " +
           shownText(*call.rule.match) + ", " + toText(call.rule.action) +
           (call.accepted ? "" : " refused");
  }
  std::string operator()(const RouteCall& call) const {
    return std::string(nameOf(call)) + " VRF id " + std::to_string(call.vrfId) + ", " +
           toText(call.prefix) + (call.route == nullptr ? "" : ' ' + routeText(*call.route));
  }

 private:
  const ChipVrfHelper& chip_;
};

class CallJson final {
 public:
  explicit CallJson(const ChipVrfHelper& chip) : chip_(chip) {}

  OrderedJson operator()(const HookCall& call) const {
    OrderedJson json = toJson(call);
    OrderedJson named{{"call", json["hook"]}};
    json.erase("hook");
    named.update(json);
    const auto program = programText(call, chip_);
    named["program"] = program ? OrderedJson(*program) : OrderedJson(nullptr);
    return named;
  }
  OrderedJson operator()(const RuleCall& call) const {
    OrderedJson json{
        {"call", nameOf(call.kind)}, {"interface", call.intf.str()}, {"place", call.place}};
    if (call.kind == RuleCall::Kind::move) json["to"] = call.to;
    json["match"] = shownText(*call.rule.match);
    json["action"] = actionJson(call.rule.action);
    json["refused"] = !call.accepted;
    return json;
  }
  OrderedJson operator()(const RouteCall& call) const {
    OrderedJson json{
        {"call", nameOf(call)}, {"vrfId", call.vrfId}, {"prefix", toText(call.prefix)}};
    if (call.route != nullptr) json["route"] = routeText(*call.route);
    return json;
  }

 private:
  const ChipVrfHelper& chip_;
};

}  // namespace

std::string toText(const ChipCall& call, const ChipVrfHelper& chip) {
  return std::visit(CallText(chip), call);
}

OrderedJson toJson(const ChipCall& call, const ChipVrfHelper& chip) {
  return std::visit(CallJson(chip), call);
}

}  // namespace ZelAgent
