#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Chips {

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
  /// Numbers of rules.
  using Members = std::vector<std::uint32_t>;

  /// Sets of rules with numbers from 0 to below `rules`.
  explicit RuleSets(std::size_t rules);

  /// A new set: `base` and the members.
  [[nodiscard]] RuleSet setIs(RuleSet base, std::span<const std::uint32_t> members) {
    return setIs(base, {}, members);
  }
  /// A new set: `base` without the members of `removed`, and then with those of `added`.
  [[nodiscard]] RuleSet setIs(RuleSet base, std::span<const std::uint32_t> removed,
                              std::span<const std::uint32_t> added);

  /// The lowest rule that is in all of the sets, of which there is at least one.
  [[nodiscard]] std::optional<std::uint32_t> lowestInAll(
      std::span<const RuleSet> sets) const noexcept;

 private:
  static constexpr std::size_t wordBits = 64;
  static constexpr std::size_t wordsPerBlock = 8;
  static constexpr std::size_t rulesPerBlock = wordBits * wordsPerBlock;
  using Block = std::array<std::uint64_t, wordsPerBlock>;

  void memberIs(RuleSet set, RuleSet base, std::uint32_t member, bool isMember);
  [[nodiscard]] std::size_t placeOf(RuleSet set, std::size_t block) const noexcept {
    return set * blocksPerSet_ + block;
  }
  // Reduces `inAll` to the rules that are also in the sets. Returns false if a set has none there.
  [[nodiscard]] bool intersect(Block& inAll, std::span<const RuleSet> sets,
                               std::size_t block) const noexcept;

  std::size_t blocksPerSet_;
  std::vector<std::uint32_t> blocksOfSets_;
  std::vector<Block> blocks_;
};

}  // namespace Chips
