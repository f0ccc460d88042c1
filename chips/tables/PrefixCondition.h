#pragma once

#include <optional>
#include <span>
#include <vector>

#include "Ip/Prefix.h"
#include "PolicyMap/NumberRange.h"

namespace ChipTables {

/// Which values of a prefix field a rule matches: those in one of `included`, in none of `excluded`
/// and, if present, in `within`. All prefixes are of one family.
struct PrefixCondition {
  std::vector<Ip::Prefix> included;
  std::vector<Ip::Prefix> excluded;
  std::optional<Ip::Prefix> within;
};

/// The number as a value of a prefix field: the first two bytes of an IPv4 address.
[[nodiscard]] Ip::Address addressOf(std::uint16_t number) noexcept;

/// The numbers of one of the ranges.
[[nodiscard]] PrefixCondition conditionOf(std::span<const PolicyMap::NumberRange> ranges);

}  // namespace ChipTables
