// Why: classification intersects sets of rules, one set per field of the packet. There are as many
// sets as there are prefixes in the rules, most of them equal to another but for a rule or two.
// Always: sets are made of blocks of 512 rules, and equal blocks of a set and of the one that it
// was made from are one block; block 0 is empty, so that an intersection passes over it without a
// look.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace SoftChip {

// Names one set.
using RuleSet = std::uint32_t;
constexpr RuleSet emptyRuleSet = 0;

class RuleSets final {
 public:
  // Of rules numbered from 0 to below `rules`.
  explicit RuleSets(std::size_t rules);

  // A new set: `base` and the members, which are in ascending order.
  [[nodiscard]] RuleSet setIs(RuleSet base, std::span<const std::uint32_t> members);

  // The lowest rule that is in all of the sets.
  [[nodiscard]] std::optional<std::uint32_t> lowestInAll(
      const std::array<RuleSet, 4>& sets) const noexcept;

 private:
  static constexpr std::size_t wordBits = 64;
  static constexpr std::size_t wordsPerBlock = 8;
  static constexpr std::size_t rulesPerBlock = wordBits * wordsPerBlock;
  using Block = std::array<std::uint64_t, wordsPerBlock>;

  void add(RuleSet set, RuleSet base, std::uint32_t member);
  [[nodiscard]] std::size_t placeOf(RuleSet set, std::size_t block) const noexcept {
    return set * blocksPerSet_ + block;
  }

  std::size_t blocksPerSet_;
  std::vector<std::uint32_t> blocksOfSets_;
  std::vector<Block> blocks_;
};

}  // namespace SoftChip
