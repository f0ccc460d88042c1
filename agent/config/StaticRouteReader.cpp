#include "agent/config/StaticRouteReader.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "agent/config/PrefixNode.h"
#include "agent/language/NearestName.h"

namespace ZelAgent {
namespace {

const std::string dropIdentity = "DROP";

std::optional<std::string> readIdentity(const JsonNode& node) {
  return node.asIdentity();
}

// Whether the text is written as an identity: "LOCAL_LINK", or "module:LOCAL_LINK".
bool isIdentity(std::string_view text) {
  text = text.substr(text.find(':') + 1);
  const bool startsWithLetter = !text.empty() && text.front() >= 'A' && text.front() <= 'Z';
  return startsWithLetter && std::all_of(text.begin(), text.end(), [](char byte) {
           return (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') || byte == '_';
         });
}

// "; did you mean 'DROP'?" for DROP and for a word that is nearly the same, in any case and behind
// any prefix.
std::string suggestionOfDrop(std::string way) {
  way.erase(0, way.rfind(':') + 1);
  for (char& byte : way) {
    if (byte >= 'a' && byte <= 'z') byte = static_cast<char>(byte - 'a' + 'A');
  }
  return suggestion(way, {dropIdentity});
}

// Whether the next hop is of a kind that is not read. A misspelt DROP is none.
bool isOfAnotherKind(const JsonNode& node) {
  for (const char* const instance : {"nh-network-instance", "next-network-instance"}) {
    if (peek(node.value(), {"config", instance}) != nullptr) return true;
  }
  const auto way = peekIdentity(node, {"config", "next-hop"});
  return way && isIdentity(*way) && suggestionOfDrop(*way).empty();
}

void readWay(const JsonNode& node, NextHop& nextHop) {
  const auto text = node.asText();
  if (!text) return;
  const std::string way(withoutModulePrefix(*text));
  nextHop.drops = way == dropIdentity;
  if (nextHop.drops) return;
  nextHop.address = parseIpAddress(*text);
  if (nextHop.address) return;
  node.refuse("must be an IP address or DROP, not " + node.shown() + suggestionOfDrop(way));
}

NextHop readNextHop(const JsonNode& node, UniqueKeys<std::string>& indexes) {
  const std::size_t before = node.findings().problems();
  const JsonObject entry(node);
  const JsonObject config = entry.child("config");
  NextHop nextHop;
  const auto index = readKey(entry, config, "index", readText);
  indexes.add(index, node);
  nextHop.index = index.value_or("");
  if (const JsonNode* const way = config.find("next-hop")) readWay(*way, nextHop);
  const JsonObject reference = entry.child("interface-ref");
  nextHop.interface = readInterface(reference.child("config"));
  if (nextHop.drops && !nextHop.interface.empty()) {
    reference.node().refuse("must be absent where the next hop is DROP");
  }
  const bool goesNowhere = !nextHop.drops && !nextHop.address && nextHop.interface.empty();
  if (goesNowhere && node.findings().problems() == before) {
    node.refuse("must have a \"next-hop\" in its config, or an \"interface-ref\"");
  }
  return nextHop;
}

std::vector<NextHop> readNextHops(const JsonObject& route) {
  std::vector<NextHop> nextHops;
  UniqueKeys<std::string> indexes;
  const std::size_t before = route.node().findings().problems();
  const auto entries = route.list("next-hops", "next-hop");
  const bool isRight = route.isObject() && route.node().findings().problems() == before;
  if (entries.empty() && isRight) route.node().refuse("must have at least one next-hop");
  for (const JsonNode& node : entries) {
    if (isOfAnotherKind(node)) {
      indexes.add(peekText(node, {"index"}), node);
      node.warn(
          "only an IP address, an interface or DROP is read; the next hop is ignored, and its "
          "route if it has no other");
    } else {
      nextHops.push_back(readNextHop(node, indexes));
    }
  }
  return nextHops;
}

class RoutesReader final {
 public:
  [[nodiscard]] std::vector<StaticRoute> read(const JsonObject& instance) {
    for (const JsonNode& node : instance.list("protocols", "protocol"))
      readProtocol(node);
    return std::move(routes_);
  }

 private:
  void readProtocol(const JsonNode& node) {
    const auto peeked = peekIdentity(node, {"identifier"});
    if (peeked && *peeked != "STATIC") {
      node.warn("only protocols with the identifier STATIC are read, ignored");
      return;
    }
    const JsonObject entry(node);
    const JsonObject config = entry.child("config");
    const auto identifier = readKey(entry, config, "identifier", readIdentity);
    const auto name = readKey(entry, config, "name", readText);
    checkEnabled(config);
    const bool isTwice = identifier && name && !protocols_.add(std::pair(*identifier, *name), node);
    if (isTwice || isDisabled(node)) return;
    for (const JsonNode& route : entry.list("static-routes", "static"))
      readRoute(route);
  }

  void readRoute(const JsonNode& node) {
    if (peek(node.value(), {"next-hop-group"}) != nullptr) {
      node.warn("only next-hops are read; the route, which has a next-hop-group, is left out");
      return;
    }
    const JsonObject entry(node);
    const auto prefix = readKey(entry, entry.child("config"), "prefix", readPrefix);
    prefixes_.add(prefix, node);
    auto nextHops = readNextHops(entry);
    if (prefix && !nextHops.empty()) routes_.push_back({*prefix, std::move(nextHops)});
  }

  std::vector<StaticRoute> routes_;
  UniqueKeys<std::pair<std::string, std::string>> protocols_;
  UniqueKeys<IpPrefix> prefixes_;
};

}  // namespace

std::vector<StaticRoute> readStaticRoutes(const JsonObject& instance) {
  return RoutesReader().read(instance);
}

}  // namespace ZelAgent
