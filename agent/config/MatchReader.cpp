#include "agent/config/MatchReader.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "agent/config/NumberRanges.h"
#include "agent/config/PrefixNode.h"
#include "agent/config/TransportReader.h"

namespace ZelAgent {
namespace {

constexpr std::uint64_t maxDscp = 63;

constexpr std::array<std::pair<const char*, std::uint8_t>, 10> protocolIdentities{{
    {"IP_ICMP", 1},
    {"IP_IGMP", 2},
    {"IP_IN_IP", 4},
    {"IP_TCP", 6},
    {"IP_UDP", 17},
    {"IP_RSVP", 46},
    {"IP_GRE", 47},
    {"IP_AUTH", 51},
    {"IP_PIM", 103},
    {"IP_L2TP", 115},
}};

std::optional<std::uint8_t> readProtocol(const JsonNode& node) {
  const auto* const number = node.value().as<std::uint64_t>();
  if (number != nullptr && *number <= 255) return static_cast<std::uint8_t>(*number);
  const auto* const text = node.value().as<std::string>();
  if (text != nullptr) {
    const auto found = std::find_if(
        protocolIdentities.begin(), protocolIdentities.end(),
        [name = withoutModulePrefix(*text)](const auto& known) { return name == known.first; });
    if (found != protocolIdentities.end()) return found->second;
  }
  return node.refuseExpecting("a number from 0 to 255 or an identity such as IP_IN_IP");
}

std::optional<std::uint8_t> readDscp(const JsonNode& node) {
  const auto number = node.asNumber(0, maxDscp);
  if (!number) return std::nullopt;
  return static_cast<std::uint8_t>(*number);
}

std::vector<std::uint8_t> readDscpSet(const JsonNode& node) {
  std::vector<std::uint8_t> set;
  const auto elements = node.elements();
  const auto* const array = node.value().as<JsonValue::Array>();
  if (array != nullptr && array->empty()) node.refuse("must not be empty");
  for (const JsonNode& element : elements) {
    const auto dscp = readDscp(element);
    if (!dscp) continue;
    if (std::find(set.begin(), set.end(), *dscp) != set.end()) {
      element.refuse("is given twice; each value may stand once");
    }
    set.push_back(*dscp);
  }
  return set;
}

// The container `config` of `ipv4` or of `ipv6`.
class HeaderReader final {
 public:
  HeaderReader(const JsonNode& header, IpFamily family, const DefinedSets& sets)
      : config_(JsonObject(header).child("config")), family_(family), sets_(sets) {}

  [[nodiscard]] RuleMatch read() {
    match_.family = family_;
    if (const auto* const node = config_.find("protocol")) match_.protocol = readProtocol(*node);
    readDscps();
    readAddresses();
    readSizes();
    if (const auto* const node = config_.find("fragment-offsets")) readFragmentOffsets(*node);
    return match_;
  }

 private:
  void readDscps() {
    const JsonNode* const dscp = config_.find("dscp");
    if (dscp != nullptr) match_.dscp = readDscp(*dscp);
    const JsonNode* const set = config_.find("dscp-set");
    if (set == nullptr) return;
    const std::size_t before = set->findings().problems();
    match_.dscpSet = readDscpSet(*set);
    const bool isRight = match_.dscp && set->findings().problems() == before;
    const auto& values = match_.dscpSet;
    if (isRight && std::find(values.begin(), values.end(), *match_.dscp) == values.end()) {
      dscp->refuse("must be in the dscp-set beside it, not " + dscp->shown());
    }
  }

  void readAddresses() {
    if (const auto* const node = config_.find("source-address")) {
      match_.source = readPrefixOf(family_, *node);
    }
    if (const auto* const node = config_.find("destination-address")) {
      match_.destination = readPrefixOf(family_, *node);
    }
    if (const auto* const node = config_.find("source-address-prefix-set")) {
      match_.sourceSet = sets_.readPrefixSet(*node, family_);
    }
    if (const auto* const node = config_.find("destination-address-prefix-set")) {
      match_.destinationSet = sets_.readPrefixSet(*node, family_);
    }
  }

  void readSizes() {
    if (const auto* const node = config_.find("hop-limit")) {
      const auto limit = node->asNumber(0, std::numeric_limits<std::uint8_t>::max());
      match_.hopLimit = static_cast<std::uint8_t>(limit.value_or(0));
    }
    if (const auto* const node = config_.find("length")) {
      const auto length = node->asNumber(0, std::numeric_limits<std::uint16_t>::max());
      match_.length = static_cast<std::uint16_t>(length.value_or(0));
    }
  }

  void readFragmentOffsets(const JsonNode& node) {
    const auto elements = node.elements();
    const auto* const array = node.value().as<JsonValue::Array>();
    if (array != nullptr && array->empty()) node.refuse("must not be empty");
    for (const JsonNode& element : elements)
      readFragmentOffset(element, elements.size() == 1);
  }

  void readFragmentOffset(const JsonNode& node, bool isAlone) {
    const auto* const text = node.value().as<std::string>();
    const bool isAny = text != nullptr && withoutModulePrefix(*text) == "ANY";
    if (isAny && !isAlone) node.refuse("ANY must stand alone");
    if (isAny) {
      match_.isFragment = true;
    } else if (const auto range = readRange(node, mostFragmentOffset)) {
      match_.fragmentOffsets.push_back(*range);
    }
  }

  JsonObject config_;
  IpFamily family_;
  const DefinedSets& sets_;
  RuleMatch match_;
};

RuleMatch readHeader(const JsonObject& rule, const DefinedSets& sets) {
  const JsonNode* const ipv4 = rule.find("ipv4");
  const JsonNode* const ipv6 = rule.find("ipv6");
  if (ipv4 != nullptr && ipv6 != nullptr) {
    rule.node().refuse("has both \"ipv4\" and \"ipv6\"; give at most one of them");
  }
  RuleMatch match;
  if (ipv6 != nullptr) match = HeaderReader(*ipv6, IpFamily::v6, sets).read();
  if (ipv4 != nullptr) match = HeaderReader(*ipv4, IpFamily::v4, sets).read();
  return match;
}

}  // namespace

RuleMatch readMatch(const JsonObject& rule, const DefinedSets& sets) {
  const std::size_t before = rule.node().findings().problems();
  RuleMatch match = readHeader(rule, sets);
  const JsonNode* const transport = rule.find("transport");
  if (transport == nullptr) return match;
  const bool isHeaderRight = rule.node().findings().problems() == before;
  TransportReader(*transport, sets, match, isHeaderRight).read();
  return match;
}

}  // namespace ZelAgent
