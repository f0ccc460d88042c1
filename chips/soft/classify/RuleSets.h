#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace SoftChip {

/// The name of one set.
using RuleSet = std::uint32_t;
constexpr RuleSet emptyRuleSet = 0;

/// Sets of rules for classification, which intersects one set for each field of a packet.
///
/// There are as many sets as prefixes in the rules, and most of them equal another one except for a
/// rule or two. So sets consist of blocks of 512 rules, and a set shares its equal blocks with the
/// set that it was made from. Block 0 is empty; an intersection skips it.
class RuleSets final {
 public:
  /// Sets of rules with numbers from 0 to below `rules`.
  explicit RuleSets(std::size_t rules);

  /// A new set: `base` and the members, which are in ascending order.
  [[nodiscard]] RuleSet setIs(RuleSet base, std::span<const std::uint32_t> members);

  /// The lowest rule that is in all of the sets.
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
