#include "chips/soft/classify/RuleField.h"

namespace SoftChip {
namespace {

bool hasDscp(const std::optional<std::uint64_t>& dscps, std::uint8_t dscp) noexcept {
  return !dscps || (*dscps >> dscp & 1) != 0;
}

bool covers(const std::optional<Ip::Prefix>& prefix, const Ip::Address& address) noexcept {
  return !prefix || prefix->contains(address);
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
  }
  return {};
}

std::optional<RuleField> firstDifference(const PolicyMap::ClassMatch& match,
                                         const PacketHeader& header) noexcept {
  if (match.family && *match.family != header.family) return RuleField::family;
  if (match.protocol && *match.protocol != header.protocol) return RuleField::protocol;
  if (!hasDscp(match.dscps, header.dscp)) return RuleField::dscp;
  if (!covers(match.source, header.source)) return RuleField::source;
  if (!covers(match.destination, header.destination)) return RuleField::destination;
  return std::nullopt;
}

}  // namespace SoftChip
