#include "agent/config/StaticRouteReader.h"

#include <string>
#include <utility>

namespace ZelAgent {
namespace {

std::string parseText(const JsonNode& node) {
  return node.asText();
}
std::string parseIdentity(const JsonNode& node) {
  return node.asIdentity();
}

IpPrefix parsePrefix(const JsonNode& node) {
  const auto prefix = parseIpPrefix(node.asText());
  if (!prefix) node.failExpecting("an IPv4 or IPv6 prefix such as \"192.0.2.0/24\"");
  return *prefix;
}

void readWay(const JsonNode& node, NextHop& nextHop) {
  nextHop.drops = node.asIdentity() == "DROP";
  if (nextHop.drops) return;
  nextHop.address = parseIpAddress(node.asText());
  if (!nextHop.address) node.failExpecting("an IP address or DROP");
}

NextHop readNextHop(const JsonNode& node) {
  const JsonObject entry(node, {"index", "config", "interface-ref"});
  const JsonObject config = entry.child("config", {"index", "next-hop"});
  NextHop nextHop;
  nextHop.index = readKey(entry, config, "index", parseText);
  if (const JsonNode* const way = config.find("next-hop")) readWay(*way, nextHop);
  const JsonObject reference = entry.child("interface-ref", {"config"});
  nextHop.interface = readInterface(reference.child("config", {"interface", "subinterface"}));
  if (nextHop.drops && !nextHop.interface.empty()) {
    reference.node().fail("must be absent where the next hop is DROP");
  }
  if (!nextHop.drops && !nextHop.address && nextHop.interface.empty()) {
    node.fail("must have a \"next-hop\" in its config, or an \"interface-ref\"");
  }
  return nextHop;
}

StaticRoute readRoute(const JsonNode& node) {
  const JsonObject entry(node, {"prefix", "config", "next-hops"});
  const JsonObject config = entry.child("config", {"prefix"});
  StaticRoute route;
  route.prefix = readKey(entry, config, "prefix", parsePrefix);
  UniqueKeys<std::string> indexes;
  for (const JsonNode& nextHop : entry.list("next-hops", "next-hop", {"index"})) {
    route.nextHops.push_back(readNextHop(nextHop));
    indexes.add(route.nextHops.back().index, nextHop);
  }
  if (route.nextHops.empty()) node.fail("must have at least one next-hop");
  return route;
}

}  // namespace

std::vector<StaticRoute> readStaticRoutes(const JsonObject& instance) {
  std::vector<StaticRoute> routes;
  UniqueKeys<std::pair<std::string, std::string>> protocols;
  UniqueKeys<IpPrefix> prefixes;
  for (const JsonNode& node : instance.list("protocols", "protocol", {"identifier", "name"})) {
    const JsonObject entry(node, {"identifier", "name", "config", "static-routes"});
    const JsonObject config = entry.child("config", {"identifier", "name"});
    const std::string identifier = readKey(entry, config, "identifier", parseIdentity);
    protocols.add({identifier, readKey(entry, config, "name", parseText)}, node);
    if (identifier != "STATIC") {
      node.warn("only protocols with the identifier STATIC are read, ignored");
      continue;
    }
    for (const JsonNode& route : entry.list("static-routes", "static", {"prefix"})) {
      routes.push_back(readRoute(route));
      prefixes.add(routes.back().prefix, route);
    }
  }
  return routes;
}

}  // namespace ZelAgent
