#include "chips/tables/RuleSets.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace ChipTables {

void memberIs(ZelRuleSet& set, std::uint32_t number, bool isMember, const Stores& stores) {
  const std::uint32_t at = number / 64;
  const std::uint64_t bit = std::uint64_t{1} << number % 64;
  const std::uint64_t word = isMember ? set.words[at] | bit : set.words[at] & ~bit;
  const std::uint64_t inSummary = std::uint64_t{1} << at;
  stores.storeChange(set.words[at], word);
  stores.storeChange(set.summary, word != 0 ? set.summary | inSummary : set.summary & ~inSummary);
}

RuleSets::RuleSets(std::span<ZelRuleSet> memory, const GraceClock& clock, Stores stores)
    : memory_(memory),
      slots_(static_cast<std::uint32_t>(memory.size()) - zelFirstRuleSet, clock),
      stores_(std::move(stores)) {
  memory_[zelNoRules] = {};
  memory_[zelAllRules].summary = ~std::uint64_t{0};
  std::fill(std::begin(memory_[zelAllRules].words), std::end(memory_[zelAllRules].words),
            ~std::uint64_t{0});
}

std::optional<std::uint32_t> RuleSets::take(std::uint32_t like) {
  const auto slot = slots_.take();
  if (!slot) return std::nullopt;
  const std::uint32_t set = *slot + zelFirstRuleSet - 1;
  memory_[set] = memory_[like];
  return set;
}

void RuleSets::giveBack(std::uint32_t set) {
  slots_.giveBack(set - zelFirstRuleSet + 1);
}

}  // namespace ChipTables
