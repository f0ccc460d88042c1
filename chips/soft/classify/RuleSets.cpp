#include "chips/soft/classify/RuleSets.h"

#include <bit>

namespace SoftChip {

RuleSets::RuleSets(std::size_t rules)
    : blocksPerSet_((rules + rulesPerBlock - 1) / rulesPerBlock),
      blocksOfSets_(blocksPerSet_, 0),
      blocks_(1) {}

RuleSet RuleSets::setIs(RuleSet base, std::span<const std::uint32_t> members) {
  if (members.empty()) return base;
  const auto set = static_cast<RuleSet>(blocksOfSets_.size() / blocksPerSet_);
  blocksOfSets_.resize(blocksOfSets_.size() + blocksPerSet_);
  for (std::size_t block = 0; block < blocksPerSet_; ++block)
    blocksOfSets_[placeOf(set, block)] = blocksOfSets_[placeOf(base, block)];
  for (const std::uint32_t member : members)
    add(set, base, member);
  return set;
}

void RuleSets::add(RuleSet set, RuleSet base, std::uint32_t member) {
  std::uint32_t& block = blocksOfSets_[placeOf(set, member / rulesPerBlock)];
  if (block == blocksOfSets_[placeOf(base, member / rulesPerBlock)]) {
    const Block copy = blocks_[block];
    blocks_.push_back(copy);
    block = static_cast<std::uint32_t>(blocks_.size() - 1);
  }
  const std::size_t within = member % rulesPerBlock;
  blocks_[block][within / wordBits] |= std::uint64_t{1} << within % wordBits;
}

std::optional<std::uint32_t> RuleSets::lowestInAll(
    const std::array<RuleSet, 4>& sets) const noexcept {
  std::array<const std::uint32_t*, 4> of{};
  for (std::size_t at = 0; at < sets.size(); ++at)
    of[at] = blocksOfSets_.data() + placeOf(sets[at], 0);
  for (std::size_t block = 0; block < blocksPerSet_; ++block) {
    if (of[0][block] == 0 || of[1][block] == 0 || of[2][block] == 0 || of[3][block] == 0) continue;
    const Block& a = blocks_[of[0][block]];
    const Block& b = blocks_[of[1][block]];
    const Block& c = blocks_[of[2][block]];
    const Block& d = blocks_[of[3][block]];
    for (std::size_t word = 0; word < wordsPerBlock; ++word) {
      const std::uint64_t inAll = a[word] & b[word] & c[word] & d[word];
      if (inAll == 0) continue;
      return static_cast<std::uint32_t>(block * rulesPerBlock + word * wordBits +
                                        static_cast<std::size_t>(std::countr_zero(inAll)));
    }
  }
  return std::nullopt;
}

}  // namespace SoftChip
