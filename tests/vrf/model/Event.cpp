#include "Event.h"

namespace VrfModel {
namespace {

// The text of each kind in reports. A word in braces is replaced by the field of that name.
constexpr std::array<std::string_view, kinds> patterns{
    "raise the count of {action} by {number}",
    "lower the count of {action} by {number}",
    "set the count of {action} to {number}",
    "delete the count of {action}",
    "delete all counts",
    "let {name} fall back to {other} in configuration {set}",
    "delete the fallback of {name} in configuration {set}",
    "delete all fallbacks in configuration {set}",
    "make {family} VRF status {name} in route status {set}",
    "replace {family} VRF status {name} in route status {set} by one with id {number}",
    "delete {family} VRF status {name} in route status {set}",
    "delete all {family} VRF statuses in route status {set}",
    "set the id of the {presence} {family} VRF status {name} of route status {set} to {number}",
    "make {family} prefix lengths {name} in route status {set}",
    "replace {family} prefix lengths {name} in route status {set}",
    "delete {family} prefix lengths {name} in route status {set}",
    "delete all {family} prefix lengths in route status {set}",
    "add length {number} to the {presence} {family} prefix lengths {name} of route status {set}",
    "take length {number} from the {presence} {family} prefix lengths {name} of route status {set}",
    "empty the {presence} {family} prefix lengths {name} of route status {set}",
    "switch decap next hops of {family} route status {set} {on}",
    "switch the decap next-hop fallback of {family} route status {set} {on}",
    "switch notifications of the policy machine {on}",
    "switch notifications of the VRF machine {on}",
    "switch the zombie state of the VRF machine {on}",
    "build the VRF machine on {inputs}",
    "drop the VRF machine",
    "call handleVrfUpdates({name}, {on})",
    "call updateVrfAction({action})",
    "call updateAllVrfActions({name})",
    "call handleVrfFallbackConfig({name})",
    "call handleVrfRefCountChange({action})",
    "call handleDecapNh()",
    "call handleDecapNhFallback()",
};

std::string shownSet(std::uint8_t set) {
  return set == noSet ? std::string("none") : std::to_string(set);
}

std::string shownInputs(const Inputs& inputs) {
  return "IPv4 route status " + shownSet(inputs.routes) + ", IPv6 route status " +
         shownSet(inputs.routes6) + ", configuration " + shownSet(inputs.fallback) +
         (inputs.withCounts ? "" : ", no counts");
}

std::string field(std::string_view word, const Event& event, const Cast& cast) {
  if (word == "action") return shown(cast.actions[event.action]);
  if (word == "name") return shown(cast.names[event.name]);
  if (word == "other") return shown(cast.names[event.other]);
  if (word == "family") return event.family == v4 ? "IPv4" : "IPv6";
  if (word == "set") return std::to_string(event.set);
  if (word == "presence") return event.retired ? "retired" : "present";
  if (word == "on") return event.on ? "on" : "off";
  if (word == "inputs") return shownInputs(event.inputs);
  return std::to_string(event.number);
}

}  // namespace

std::string shown(const Event& event, const Cast& cast) {
  std::string text;
  std::string_view rest = patterns[static_cast<std::size_t>(event.kind)];
  for (auto brace = rest.find('{'); brace != rest.npos; brace = rest.find('{')) {
    const auto end = rest.find('}');
    text += rest.substr(0, brace);
    text += field(rest.substr(brace + 1, end - brace - 1), event, cast);
    rest.remove_prefix(end + 1);
  }
  return text += rest;
}

}  // namespace VrfModel
