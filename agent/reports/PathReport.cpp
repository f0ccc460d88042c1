#include "agent/reports/PathReport.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "agent/config/IpPrefix.h"
#include "agent/language/TcpFlags.h"
#include "agent/language/Words.h"
#include "agent/model/forwarding/ForwardingAgent.h"
#include "agent/model/policies/PolicyObjects.h"
#include "agent/reports/RuleReport.h"

namespace ZelAgent {
namespace {

using Chips::GoOnReason;
using Chips::OwnVrfReason;
using Chips::PacketHeader;
using Chips::RouteHit;
using Chips::VrfFacts;

std::string toText(const PacketHeader& header) {
  std::string text = ZelAgent::toText(header.family) + ' ' + ZelAgent::toText(header.source) +
                     " to " + ZelAgent::toText(header.destination) + " protocol " +
                     std::to_string(header.protocol);
  if (header.dscp != 0) text += " dscp " + std::to_string(header.dscp);
  if (header.ecn != 0) text += " ecn " + std::to_string(header.ecn);
  text += " ttl " + std::to_string(header.ttl);
  if (header.fragment.isFragment())
    text += " fragment-offset " + std::to_string(header.fragment.offset);
  if (header.ports && *header.ports != Chips::Ports()) {
    text += " source-port " + std::to_string(header.ports->source) + " destination-port " +
            std::to_string(header.ports->destination);
  }
  if (header.tcpFlags) text += " tcp-flags " + tcpFlagsText(*header.tcpFlags, ",");
  return text + ", " + std::to_string(header.totalLength) + " bytes";
}

OrderedJson toJson(const PacketHeader& header) {
  OrderedJson json{{"family", ZelAgent::toText(header.family)},
                   {"source", ZelAgent::toText(header.source)},
                   {"destination", ZelAgent::toText(header.destination)},
                   {"protocol", header.protocol},
                   {"dscp", header.dscp},
                   {"ecn", header.ecn},
                   {"ttl", header.ttl},
                   {"bytes", header.totalLength}};
  if (header.fragment.isFragment()) {
    json["fragmentOffset"] = header.fragment.offset;
    json["moreFragments"] = header.fragment.more;
  }
  if (header.ports) {
    json["sourcePort"] = header.ports->source;
    json["destinationPort"] = header.ports->destination;
  }
  if (header.tcpFlags) json["tcpFlags"] = tcpFlagsText(*header.tcpFlags, ",");
  return json;
}

std::string vrfText(const L3::VrfName& vrf) {
  return "VRF " + toWord(vrf.bytes());
}

std::string routeText(const Chips::Route& route) {
  switch (route.kind) {
    case Chips::Route::Kind::egress:
      return "via " + toWord(route.intf);
    case Chips::Route::Kind::drop:
      return "drop";
    case Chips::Route::Kind::decap:
      return "decap";
  }
  return {};
}

const char* textOf(OwnVrfReason reason) {
  switch (reason) {
    case OwnVrfReason::noRuleMatched:
      return "no rule matches";
    case OwnVrfReason::ruleWithoutAction:
      return "the rule has no action";
    case OwnVrfReason::noPostDecapVrf:
      return "the action names no post-decapsulation VRF";
  }
  return "";
}

const char* textOf(GoOnReason reason) {
  switch (reason) {
    case GoOnReason::noRoute:
      return "no route";
    case GoOnReason::noVrfId:
      return "the VRF has no hardware id";
    case GoOnReason::decapDisabled:
      return "decap-nh is off, and decap-nh-fallback is on";
  }
  return "";
}

}  // namespace

PathReport::PathReport(RuleStates rules) : rules_(std::move(rules)) {
  for (std::size_t index = 0; index < rules_.size(); ++index) {
    if (rules_[index].place) indexes_.emplace(*rules_[index].place, index);
  }
}

PathReport::PathReport(PathReport&&) noexcept = default;

PathReport::~PathReport() = default;

std::string PathReport::text() const {
  std::string text;
  for (const std::string& line : lines_)
    text += line + '\n';
  return text;
}

OrderedJson PathReport::json() const {
  return steps_;
}

void PathReport::parsed(const PacketHeader& header) {
  add("packet " + toText(header), {{"step", "packet"}, {"packet", toJson(header)}});
}

void PathReport::ruleTried(std::size_t place, const PolicyMap::AclRule& /*rule*/,
                           std::optional<Chips::RuleField> difference) {
  const RuleState& tried = ruleAt(place);
  const ActionUser& user = tried.user;
  const std::string match = shownText(*tried.rule.match);
  const std::string field = difference ? std::string(nameOf(*difference)) : "";
  add("rule " + std::to_string(user.sequenceId) + " of " + toWord(user.policyId) + ", " + match +
          (difference ? ": differs by " + field : ": matches"),
      {{"step", "rule"},
       {"place", place},
       {"policy", user.policyId},
       {"rule", user.sequenceId},
       {"match", match},
       {"matches", !difference},
       {"differsBy", difference ? OrderedJson(field) : OrderedJson(nullptr)}});
}

void PathReport::actionTaken(const PolicyMap::RuleAction& action,
                             std::optional<Chips::ResourceUse> resource) {
  std::string line = "action " + ZelAgent::toText(action);
  OrderedJson step{{"step", "action"}, {"action", actionJson(action)}, {"resource", nullptr}};
  if (resource) {
    line += ", resource " + std::to_string(resource->index) + (resource->stale ? " (stale)" : "");
    step["resource"] = {{"index", resource->index}, {"stale", resource->stale}};
  } else if (vrfActionOf(action)) {
    line += ", no resource";
  }
  add(std::move(line), std::move(step));
}

void PathReport::ownVrfTaken(const L3::VrfName& vrf, OwnVrfReason reason) {
  add("interface " + vrfText(vrf) + ": " + textOf(reason),
      {{"step", "interfaceVrf"}, {"vrfName", vrf.str()}, {"because", textOf(reason)}});
}

void PathReport::lookedUp(const VrfFacts& vrf, const Ip::Address& destination,
                          const std::optional<RouteHit>& hit) {
  const std::string prefix = hit ? ZelAgent::toText(hit->prefix) : "";
  const std::string route = hit ? routeText(*hit->route) : "";
  add("look up " + ZelAgent::toText(destination) + " in " + vrfText(vrf.name) + " (id " +
          std::to_string(vrf.vrfId) +
          "): " + (hit ? prefix + ' ' + route + (hit->exactMatch ? " (exact match)" : "") : "miss"),
      {{"step", "lookUp"},
       {"vrfName", vrf.name.str()},
       {"vrfId", vrf.vrfId},
       {"destination", ZelAgent::toText(destination)},
       {"prefix", hit ? OrderedJson(prefix) : OrderedJson(nullptr)},
       {"route", hit ? OrderedJson(route) : OrderedJson(nullptr)},
       {"exactMatch", hit && hit->exactMatch}});
}

void PathReport::wentOn(const VrfFacts& from, const VrfFacts& to, GoOnReason reason) {
  add("fall back to " + vrfText(to.name) + ": " + textOf(reason), {{"step", "fallback"},
                                                                   {"from", from.name.str()},
                                                                   {"to", to.name.str()},
                                                                   {"because", textOf(reason)}});
}

void PathReport::decapsulated(const PacketHeader& outer, const PacketHeader& arrived,
                              const PacketHeader& inner) {
  add("decapsulate: " + toText(inner), {{"step", "decapsulate"},
                                        {"outer", toJson(outer)},
                                        {"inner", toJson(inner)},
                                        {"arrived", toJson(arrived)}});
}

void PathReport::dropped(Chips::DropReason reason, std::string_view detail) {
  const std::string name(nameOf(reason));
  const std::string what(detail.empty() ? Chips::textOf(reason) : detail);
  add("drop " + name + ": " + what, {{"step", "drop"}, {"reason", name}, {"detail", what}});
}

void PathReport::left(const std::string& intf, const L3::VrfName& vrf, const PacketHeader& header) {
  add("forward via " + toWord(intf) + ": " + toText(header), {{"step", "forward"},
                                                              {"interface", intf},
                                                              {"vrfName", vrf.str()},
                                                              {"packet", toJson(header)}});
}

void PathReport::add(std::string line, OrderedJson step) {
  lines_.push_back(std::move(line));
  steps_.push_back(std::move(step));
}

const RuleState& PathReport::ruleAt(std::size_t place) const {
  return rules_[indexes_.at(place)];
}

PathReport explain(ForwardingAgent& agent, const std::string& interface,
                   std::span<const std::uint8_t> packet) {
  PathReport path(agent.rules(interface));
  static_cast<void>(agent.forwarder().explain(interface, packet, path));
  return path;
}

}  // namespace ZelAgent
