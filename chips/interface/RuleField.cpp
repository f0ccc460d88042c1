#include "chips/interface/RuleField.h"

#include <algorithm>

namespace Chips {
namespace {

using PolicyMap::AclMatch;
using Ranges = std::vector<PolicyMap::NumberRange>;
using SetOfPrefixes = std::optional<Classification::SharedPrefixSet>;

bool hasDscp(const std::optional<std::uint64_t>& dscps, std::uint8_t dscp) noexcept {
  return !dscps || (*dscps >> dscp & 1) != 0;
}

bool covers(const std::optional<Ip::Prefix>& prefix, const Ip::Address& address) noexcept {
  return !prefix || prefix->contains(address);
}

bool contains(const SetOfPrefixes& set, const Ip::Address& address) noexcept {
  return !set || (*set)->contains(address);
}

bool contain(const Ranges& ranges, std::uint16_t number) noexcept {
  return ranges.empty() || std::any_of(ranges.begin(), ranges.end(), [number](const auto& range) {
           return range.contains(number);
         });
}

bool hasPort(const Ranges& ranges, const std::optional<Ports>& ports,
             std::uint16_t Ports::*which) noexcept {
  return ranges.empty() || (ports && contain(ranges, (*ports).*which));
}

bool hasFlags(const AclMatch& match, const PacketHeader& header) noexcept {
  const auto& wanted = match.tcpFlags;
  return wanted.empty() ||
         (header.tcpFlags && std::any_of(wanted.begin(), wanted.end(), [&](const auto& flags) {
            return flags.matches(*header.tcpFlags);
          }));
}

std::optional<RuleField> upperLayerDifference(const AclMatch& match,
                                              const PacketHeader& header) noexcept {
  if (match.matchesLaterFragments && header.fragment.offset != 0) return std::nullopt;
  if (!hasPort(match.sourcePorts, header.ports, &Ports::source)) return RuleField::sourcePort;
  if (!hasPort(match.destinationPorts, header.ports, &Ports::destination))
    return RuleField::destinationPort;
  if (!hasFlags(match, header)) return RuleField::tcpFlags;
  return std::nullopt;
}

}  // namespace

std::string_view nameOf(RuleField field) noexcept {
  switch (field) {
    case RuleField::family:
      return "family";
    case RuleField::protocol:
      return "protocol";
    case RuleField::dscp:
      return "dscp";
    case RuleField::source:
      return "source-address";
    case RuleField::destination:
      return "destination-address";
    case RuleField::sourceSet:
      return "source-set";
    case RuleField::destinationSet:
      return "destination-set";
    case RuleField::hopLimit:
      return "hop-limit";
    case RuleField::length:
      return "length";
    case RuleField::fragment:
      return "fragment";
    case RuleField::fragmentOffset:
      return "fragment-offset";
    case RuleField::sourcePort:
      return "source-port";
    case RuleField::destinationPort:
      return "destination-port";
    case RuleField::tcpFlags:
      return "tcp-flags";
  }
  return {};
}

std::optional<RuleField> firstDifference(const AclMatch& match,
                                         const PacketHeader& header) noexcept {
  if (match.family && *match.family != header.family) return RuleField::family;
  if (match.protocol && *match.protocol != header.protocol) return RuleField::protocol;
  if (!hasDscp(match.dscps, header.dscp)) return RuleField::dscp;
  if (!covers(match.source, header.source)) return RuleField::source;
  if (!covers(match.destination, header.destination)) return RuleField::destination;
  if (!contains(match.sourceSet, header.source)) return RuleField::sourceSet;
  if (!contains(match.destinationSet, header.destination)) return RuleField::destinationSet;
  if (match.hopLimit && *match.hopLimit != header.ttl) return RuleField::hopLimit;
  if (match.length && *match.length != header.totalLength) return RuleField::length;
  if (match.isFragment && !header.fragment.isFragment()) return RuleField::fragment;
  if (!contain(match.fragmentOffsets, header.fragment.offset)) return RuleField::fragmentOffset;
  return upperLayerDifference(match, header);
}

}  // namespace Chips
