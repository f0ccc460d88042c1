#include "agent/reports/RouteReport.h"

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "agent/language/Limits.h"
#include "agent/language/PrintableText.h"
#include "agent/language/Words.h"
#include "agent/reports/StateReport.h"

namespace ZelAgent {
namespace {

using Kind = Chips::Route::Kind;

const char* nameOf(RouteState::Result result) {
  switch (result) {
    case RouteState::Result::programmed:
      return "programmed";
    case RouteState::Result::hidden:
      return "hidden";
    case RouteState::Result::unresolved:
      return "not resolved";
    case RouteState::Result::notProgrammed:
      break;
  }
  return "not programmed";
}

const char* nameOf(Kind kind) {
  return kind == Kind::egress ? "egress" : kind == Kind::drop ? "drop" : "decap";
}

const char* originText(const RouteState& route) {
  return route.origin == RouteState::Origin::event ? "event" : "configured";
}

std::string nextHopText(const NextHop& nextHop) {
  if (nextHop.drops) return "drop";
  std::vector<std::string> words;
  if (nextHop.address) words.push_back(toText(*nextHop.address));
  if (!nextHop.interface.empty())
    words.push_back("via " + printable(nextHop.interface, Limits::shownTextBytes));
  return joined(words, " ");
}

std::string nextHopsText(const RouteState& route) {
  std::vector<std::string> texts;
  for (const NextHop& nextHop : route.nextHops)
    texts.push_back(nextHopText(nextHop));
  return texts.empty() ? "-" : joined(texts, ", ");
}

std::string resolvedText(const RouteState& route) {
  if (!route.resolved) return "-";
  if (route.resolved->kind != Kind::egress) return nameOf(route.resolved->kind);
  return printable(route.resolved->intf, Limits::shownTextBytes);
}

std::string stateText(const RouteState& route) {
  const std::string state = nameOf(route.result);
  return route.reason.empty() ? state : state + ": " + route.reason;
}

std::vector<std::string> cellsOf(const RouteState& route) {
  return {printable(route.vrf, Limits::shownTextBytes),
          toText(route.prefix),
          originText(route),
          nextHopsText(route),
          resolvedText(route),
          stateText(route)};
}

OrderedJson nextHopsJson(const RouteState& route) {
  OrderedJson json = OrderedJson::array();
  for (const NextHop& nextHop : route.nextHops) {
    json.push_back(
        {{"index", nextHop.index},
         {"address", nextHop.address ? OrderedJson(toText(*nextHop.address)) : OrderedJson()},
         {"interface", nextHop.interface},
         {"drop", nextHop.drops}});
  }
  return json;
}

OrderedJson resolvedJson(const RouteState& route) {
  if (!route.resolved) return nullptr;
  return {{"kind", nameOf(route.resolved->kind)}, {"interface", route.resolved->intf}};
}

std::string elementOf(const RouteState& route) {
  return oneLine({{"vrfName", route.vrf},
                  {"prefix", toText(route.prefix)},
                  {"origin", originText(route)},
                  {"nextHops", nextHopsJson(route)},
                  {"resolved", resolvedJson(route)},
                  {"state", nameOf(route.result)},
                  {"reason", route.reason}});
}

}  // namespace

ReportPagesPtr routePages(ReadRows<RouteState> read, bool asJson) {
  const RowFormat<RouteState> format{{"VRF", "PREFIX", "ORIGIN", "NEXT-HOPS", "RESOLVED", "STATE"},
                                     "  no routes\n",
                                     cellsOf,
                                     elementOf};
  return pagesOf(format, std::move(read), asJson);
}

}  // namespace ZelAgent
