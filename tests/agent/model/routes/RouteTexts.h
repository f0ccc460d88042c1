// Routes of a VRF in short words, to write and to compare them in tests.
#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include "agent/model/routes/RoutingTable.h"

namespace ZelAgent {

[[nodiscard]] inline IpPrefix prefixOf(const std::string& text) {
  return parseIpPrefix(text).value();
}

[[nodiscard]] inline Chips::Route via(const std::string& interface) {
  return {Chips::Route::Kind::egress, interface};
}
[[nodiscard]] inline Chips::Route decapRoute() {
  return {Chips::Route::Kind::decap, {}};
}

// A next hop is "drop", an address, or "via INTERFACE".
[[nodiscard]] inline NextHop nextHopOf(const std::string& text) {
  NextHop nextHop;
  if (text == "drop") {
    nextHop.drops = true;
  } else if (text.rfind("via ", 0) == 0) {
    nextHop.interface = text.substr(4);
  } else {
    nextHop.address = parseIpAddress(text).value();
  }
  return nextHop;
}

[[nodiscard]] inline StaticRoute routeOf(const std::string& prefix,
                                         std::initializer_list<std::string> nextHops) {
  StaticRoute route{prefixOf(prefix), {}};
  for (const std::string& nextHop : nextHops)
    route.nextHops.push_back(nextHopOf(nextHop));
  return route;
}

// "drop", "decap" or "via INTERFACE" for each prefix.
[[nodiscard]] inline std::map<std::string, std::string> shown(const RoutingTable::Routes& routes) {
  std::map<std::string, std::string> texts;
  for (const auto& [prefix, route] : routes) {
    const bool leaves = route.kind == Chips::Route::Kind::egress;
    const bool drops = route.kind == Chips::Route::Kind::drop;
    texts[toText(prefix)] = leaves ? "via " + route.intf : std::string(drops ? "drop" : "decap");
  }
  return texts;
}

}  // namespace ZelAgent
