#include "agent/config/NumberRanges.h"

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace ZelAgent {
namespace {

using PolicyMap::NumberRange;
using Ranges = std::vector<NumberRange>;

std::optional<std::uint16_t> parseNumberUpTo(std::string_view text, std::uint16_t most) {
  std::uint16_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stopped != end || number > most) return std::nullopt;
  return number;
}

std::optional<NumberRange> parseRange(std::string_view text, std::uint16_t most) {
  if (text == "ANY") return NumberRange{0, most};
  const std::size_t dots = text.find("..");
  if (dots == std::string_view::npos) return std::nullopt;
  const auto first = parseNumberUpTo(text.substr(0, dots), most);
  const auto last = parseNumberUpTo(text.substr(dots + 2), most);
  if (!first || !last) return std::nullopt;
  return NumberRange{*first, *last};
}

// In ascending order, with those joined that overlap or touch.
Ranges joinedRanges(Ranges ranges) {
  std::sort(ranges.begin(), ranges.end());
  Ranges result;
  for (const NumberRange& range : ranges) {
    if (!result.empty() && range.first <= result.back().last + 1) {
      result.back().last = std::max(result.back().last, range.last);
    } else {
      result.push_back(range);
    }
  }
  return result;
}

void addWithout(Ranges& result, NumberRange range, const Ranges& excluded) {
  unsigned next = range.first;
  for (const NumberRange& gap : excluded) {
    if (gap.last < next || gap.first > range.last) continue;
    if (gap.first > next) {
      result.push_back(
          {static_cast<std::uint16_t>(next), static_cast<std::uint16_t>(gap.first - 1)});
    }
    next = gap.last + 1U;
  }
  if (next <= range.last) result.push_back({static_cast<std::uint16_t>(next), range.last});
}

}  // namespace

std::optional<NumberRange> readRange(const JsonNode& node, std::uint16_t most) {
  if (const auto* const number = node.value().as<std::uint64_t>(); number && *number <= most) {
    const auto only = static_cast<std::uint16_t>(*number);
    return NumberRange{only, only};
  }
  const auto* const text = node.value().as<std::string>();
  const auto range = text == nullptr ? std::nullopt : parseRange(withoutModulePrefix(*text), most);
  if (range && range->first > range->last) {
    return node.refuseExpecting("a range whose first number is not greater than its last");
  }
  if (range) return range;
  return node.refuseExpecting("a number from 0 to " + std::to_string(most) +
                              ", \"FIRST..LAST\" or ANY");
}

Ranges without(Ranges ranges, Ranges excluded) {
  const Ranges gaps = joinedRanges(std::move(excluded));
  Ranges result;
  const Ranges joined = joinedRanges(std::move(ranges));
  for (const NumberRange& range : joined)
    addWithout(result, range, gaps);
  return result;
}

}  // namespace ZelAgent
