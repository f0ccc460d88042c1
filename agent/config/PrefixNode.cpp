#include "agent/config/PrefixNode.h"

namespace ZelAgent {

std::optional<IpPrefix> readPrefixOf(IpFamily family, const JsonNode& node) {
  const auto text = node.asText();
  if (!text) return std::nullopt;
  const auto prefix = parseIpPrefix(*text);
  if (prefix && prefix->address.family == family) return prefix;
  return node.refuseExpecting(family == IpFamily::v4 ? "an IPv4 prefix such as \"192.0.2.0/24\""
                                                     : "an IPv6 prefix such as \"2001:db8::/32\"");
}

std::optional<IpPrefix> readPrefix(const JsonNode& node) {
  const auto text = node.asText();
  if (!text) return std::nullopt;
  const auto prefix = parseIpPrefix(*text);
  if (prefix) return prefix;
  return node.refuseExpecting("an IPv4 or IPv6 prefix such as \"192.0.2.0/24\"");
}

}  // namespace ZelAgent
