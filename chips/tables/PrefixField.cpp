#include "chips/tables/PrefixField.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <iterator>
#include <set>
#include <span>

namespace ChipTables {
namespace {

// The prefixes that a condition names, in the three parts of it.
std::array<std::span<const Ip::Prefix>, 3> namesOf(const PrefixCondition& condition) {
  const auto* const within = condition.within ? &*condition.within : nullptr;
  return {condition.included, condition.excluded,
          std::span<const Ip::Prefix>(within, within != nullptr ? 1 : 0)};
}

bool covers(const Ip::Prefix& prefix, const Ip::Prefix& other) noexcept {
  return prefix.length <= other.length && prefix.contains(other.address);
}

// The longest prefix of two different addresses of one family.
Ip::Prefix commonOf(const Ip::Address& one, const Ip::Address& other) noexcept {
  const auto differs = std::mismatch(one.bytes.begin(), one.bytes.end(), other.bytes.begin()).first;
  const auto byte = static_cast<std::size_t>(differs - one.bytes.begin());
  const auto different = static_cast<std::uint8_t>(one.bytes[byte] ^ other.bytes[byte]);
  const auto length =
      static_cast<std::uint8_t>(byte * 8 + static_cast<std::size_t>(std::countl_zero(different)));
  return {Ip::firstBits(one, length), length};
}

}  // namespace

bool PrefixField::ruleIs(std::uint32_t number, const PrefixCondition& condition) {
  std::vector<Ip::Prefix> named;
  for (const auto prefixes : namesOf(condition)) {
    for (const Ip::Prefix& prefix : prefixes) {
      if (nameIs(prefix)) {
        named.push_back(prefix);
        continue;
      }
      for (const Ip::Prefix& undone : named)
        nameDel(undone);
      return false;
    }
  }
  memberIs(number, condition, true);
  return true;
}

void PrefixField::ruleDel(std::uint32_t number, const PrefixCondition& condition) {
  memberIs(number, condition, false);
  for (const auto prefixes : namesOf(condition)) {
    for (const Ip::Prefix& prefix : prefixes)
      nameDel(prefix);
  }
}

bool PrefixField::nameIs(const Ip::Prefix& prefix) {
  const auto found = present_.find(prefix);
  if (found != present_.end()) {
    ++found->second.names;
    return true;
  }
  const auto set = sets_.take(setAbove(prefix));
  if (!set) return false;
  if (!elements_.elementIs(elementOf(prefix), *set)) {
    sets_.giveBack(*set);
    return false;
  }
  present_.insert({prefix, {*set, 1}});
  return true;
}

void PrefixField::nameDel(const Ip::Prefix& prefix) {
  const auto found = present_.find(prefix);
  if (--found->second.names != 0) return;
  elements_.elementDel(elementOf(prefix));
  sets_.giveBack(found->second.set);
  present_.erase(found);
}

// The set of the longest other element that covers the prefix.
std::uint32_t PrefixField::setAbove(const Ip::Prefix& prefix) const {
  auto next = present_.lower_bound(prefix);
  while (next != present_.begin()) {
    // The element that is looked for is this one, or covers this one, too.
    const auto& [before, element] = *std::prev(next);
    if (before.contains(prefix.address)) return element.set;
    if (before.address.family != prefix.address.family) break;
    next = present_.upper_bound(commonOf(before.address, prefix.address));
  }
  return zelNoRules;
}

void PrefixField::memberIs(std::uint32_t number, const PrefixCondition& condition, bool isMember) {
  for (const std::uint32_t set : setsOf(condition))
    sets_.memberIs(set, number, isMember);
}

// The sets of the elements whose values the condition matches.
std::vector<std::uint32_t> PrefixField::setsOf(const PrefixCondition& condition) const {
  std::set<std::uint32_t> sets;
  for (const Ip::Prefix& prefix : condition.included) {
    forEachWithin(prefix, [&](const auto& element) {
      if (!condition.within || covers(*condition.within, element.first))
        sets.insert(element.second.set);
    });
  }
  for (const Ip::Prefix& prefix : condition.excluded)
    forEachWithin(prefix, [&](const auto& element) { sets.erase(element.second.set); });
  return {sets.begin(), sets.end()};
}

void PrefixField::forEachWithin(
    const Ip::Prefix& prefix, const std::function<void(const Elements::value_type&)>& visit) const {
  for (auto at = present_.lower_bound(prefix);
       at != present_.end() && prefix.contains(at->first.address); ++at)
    visit(*at);
}

}  // namespace ChipTables
