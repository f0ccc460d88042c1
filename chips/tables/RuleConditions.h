#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>

#include "PolicyMap/AclMatch.h"
#include "chips/tables/PrefixCondition.h"
#include "chips/tables/layout/Classifier.h"

namespace ChipTables {

constexpr std::uint32_t prefixFields = zelLookedUpFields - zelValueFields;

/// A rule's match, as the fields of a classifier hold it. A packet matches the rule if it matches
/// every field. A field without a condition matches all packets.
struct RuleConditions {
  using Values = std::bitset<256>;

  explicit RuleConditions(const PolicyMap::AclMatch& match);

  std::array<std::optional<Values>, zelValueFields> values;
  /// By field, from `zelValueFields` on.
  std::array<std::optional<PrefixCondition>, prefixFields> prefixes;
  /// Whether fragments that are not the first match whatever the ports and TCP flags are.
  bool matchesLaterFragments;
};

}  // namespace ChipTables
