#include "chips/tables/PrefixCondition.h"

#include <algorithm>
#include <bit>
#include <cstdint>

namespace ChipTables {
namespace {

constexpr std::uint32_t numberBits = 16;

// Adds the fewest prefixes with the numbers of the range.
void addPrefixes(const PolicyMap::NumberRange& range, std::vector<Ip::Prefix>& prefixes) {
  std::uint32_t first = range.first;
  while (first <= range.last) {
    const auto aligned = static_cast<std::uint32_t>(std::countr_zero(first | 1U << numberBits));
    const auto fitting = static_cast<std::uint32_t>(std::bit_width(range.last - first + 1U)) - 1;
    const std::uint32_t free = std::min(aligned, fitting);
    prefixes.push_back({addressOf(static_cast<std::uint16_t>(first)),
                        static_cast<std::uint8_t>(numberBits - free)});
    first += 1U << free;
  }
}

}  // namespace

Ip::Address addressOf(std::uint16_t number) noexcept {
  Ip::Address address;
  address.bytes[0] = static_cast<std::uint8_t>(number >> 8);
  address.bytes[1] = static_cast<std::uint8_t>(number);
  return address;
}

PrefixCondition conditionOf(std::span<const PolicyMap::NumberRange> ranges) {
  PrefixCondition condition;
  for (const PolicyMap::NumberRange& range :
       PolicyMap::fewestRanges({ranges.begin(), ranges.end()}))
    addPrefixes(range, condition.included);
  return condition;
}

}  // namespace ChipTables
