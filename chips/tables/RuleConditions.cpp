#include "chips/tables/RuleConditions.h"

#include <algorithm>

namespace ChipTables {
namespace {

using PolicyMap::AclMatch;
using Values = RuleConditions::Values;
using Prefixes = std::optional<PrefixCondition>;
using PrefixSet = std::optional<Classification::SharedPrefixSet>;

std::optional<Values> valuesOf(const std::optional<std::uint8_t>& value) {
  if (!value) return std::nullopt;
  return Values().set(*value);
}

std::optional<Values> familyOf(const AclMatch& match) {
  if (!match.family) return std::nullopt;
  return Values().set(*match.family == Ip::Family::v6 ? 1 : 0);
}

std::optional<Values> dscpsOf(const AclMatch& match) {
  if (!match.dscps) return std::nullopt;
  return Values(*match.dscps);
}

std::optional<Values> fragmentsOf(const AclMatch& match) {
  if (!match.isFragment) return std::nullopt;
  return Values().set(1);
}

std::optional<Values> flagsOf(const AclMatch& match) {
  if (match.tcpFlags.empty()) return std::nullopt;
  Values values;
  for (unsigned flags = 0; flags < values.size(); ++flags) {
    values[flags] = std::any_of(
        match.tcpFlags.begin(), match.tcpFlags.end(),
        [flags](const auto& wanted) { return wanted.matches(static_cast<std::uint8_t>(flags)); });
  }
  return values;
}

Prefixes addressesOf(const std::optional<Ip::Prefix>& prefix, const PrefixSet& set) {
  if (!set) return prefix ? Prefixes({{*prefix}, {}, {}}) : std::nullopt;
  return Prefixes({(*set)->prefixes, (*set)->excluded, prefix});
}

Prefixes numbersOf(const std::vector<PolicyMap::NumberRange>& ranges) {
  if (ranges.empty()) return std::nullopt;
  return conditionOf(ranges);
}

Prefixes lengthOf(const AclMatch& match) {
  if (!match.length) return std::nullopt;
  return numbersOf({{*match.length, *match.length}});
}

}  // namespace

RuleConditions::RuleConditions(const AclMatch& match)
    : values{familyOf(match),          valuesOf(match.protocol), dscpsOf(match),
             valuesOf(match.hopLimit), flagsOf(match),           fragmentsOf(match)},
      prefixes{addressesOf(match.source, match.sourceSet),
               addressesOf(match.destination, match.destinationSet),
               lengthOf(match),
               numbersOf(match.fragmentOffsets),
               numbersOf(match.sourcePorts),
               numbersOf(match.destinationPorts)},
      matchesLaterFragments(!match.comparesUpperLayer() || match.matchesLaterFragments) {}

}  // namespace ChipTables
