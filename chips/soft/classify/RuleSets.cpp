#include "chips/soft/classify/RuleSets.h"

#include <bit>

namespace Chips {

RuleSets::RuleSets(std::size_t rules)
    : blocksPerSet_((rules + rulesPerBlock - 1) / rulesPerBlock),
      blocksOfSets_(blocksPerSet_, 0),
      blocks_(1) {}

RuleSet RuleSets::setIs(RuleSet base, std::span<const std::uint32_t> removed,
                        std::span<const std::uint32_t> added) {
  if (removed.empty() && added.empty()) return base;
  const auto set = static_cast<RuleSet>(blocksOfSets_.size() / blocksPerSet_);
  blocksOfSets_.resize(blocksOfSets_.size() + blocksPerSet_);
  for (std::size_t block = 0; block < blocksPerSet_; ++block)
    blocksOfSets_[placeOf(set, block)] = blocksOfSets_[placeOf(base, block)];
  for (const std::uint32_t member : removed)
    memberIs(set, base, member, false);
  for (const std::uint32_t member : added)
    memberIs(set, base, member, true);
  return set;
}

void RuleSets::memberIs(RuleSet set, RuleSet base, std::uint32_t member, bool isMember) {
  std::uint32_t& block = blocksOfSets_[placeOf(set, member / rulesPerBlock)];
  if (block == blocksOfSets_[placeOf(base, member / rulesPerBlock)]) {
    const Block copy = blocks_[block];
    blocks_.push_back(copy);
    block = static_cast<std::uint32_t>(blocks_.size() - 1);
  }
  const std::size_t within = member % rulesPerBlock;
  std::uint64_t& word = blocks_[block][within / wordBits];
  const std::uint64_t bit = std::uint64_t{1} << within % wordBits;
  word = isMember ? word | bit : word & ~bit;
}

bool RuleSets::intersect(Block& inAll, std::span<const RuleSet> sets,
                         std::size_t block) const noexcept {
  for (const RuleSet set : sets) {
    const std::uint32_t present = blocksOfSets_[placeOf(set, block)];
    if (present == 0) return false;
    const Block& words = blocks_[present];
    for (std::size_t word = 0; word < wordsPerBlock; ++word)
      inAll[word] &= words[word];
  }
  return true;
}

std::optional<std::uint32_t> RuleSets::lowestInAll(std::span<const RuleSet> sets) const noexcept {
  for (std::size_t block = 0; block < blocksPerSet_; ++block) {
    Block inAll = blocks_[blocksOfSets_[placeOf(sets.front(), block)]];
    if (!intersect(inAll, sets.subspan(1), block)) continue;
    for (std::size_t word = 0; word < wordsPerBlock; ++word) {
      if (inAll[word] == 0) continue;
      return static_cast<std::uint32_t>(block * rulesPerBlock + word * wordBits +
                                        static_cast<std::size_t>(std::countr_zero(inAll[word])));
    }
  }
  return std::nullopt;
}

}  // namespace Chips
