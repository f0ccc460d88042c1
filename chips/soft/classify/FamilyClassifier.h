#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "chips/soft/classify/RuleSets.h"
#include "chips/soft/packet/PacketHeader.h"
#include "chips/soft/routes/PrefixTrie.h"

namespace SoftChip {

/// Finds the first rule that a packet of one family matches, among thousands, in the time of a few
/// comparisons.
///
/// Each field of the packet gives the set of rules that it satisfies. The lowest rule in all sets
/// is the answer. The set of a prefix holds the rules of that prefix and of every prefix that
/// covers it, so the longest prefix that covers an address has them all.
class FamilyClassifier final {
 public:
  /// Compiles those rules that packets of the family can match.
  FamilyClassifier(std::span<const PolicyMap::AclRule> rules, Ip::Family family);

  /// The place in the rules of the first that matches. Precondition: the header is of the family.
  [[nodiscard]] std::optional<std::size_t> firstMatch(const PacketHeader& header) const;

 private:
  using Rules = std::span<const PolicyMap::AclRule>;
  using Members = std::vector<std::uint32_t>;  // numbers of rules, ascending
  using PrefixSets = PrefixTrie<RuleSet>;
  using PrefixOf = std::optional<Ip::Prefix> PolicyMap::ClassMatch::*;

  void compilePrefixes(Rules rules, Ip::Family family, PrefixOf prefixOf, PrefixSets& sets);
  void compileProtocols(Rules rules);
  void compileDscps(Rules rules);
  [[nodiscard]] const PolicyMap::ClassMatch& matchOf(Rules rules, std::uint32_t number) const {
    return rules[places_[number]].match;
  }
  [[nodiscard]] std::uint32_t count() const noexcept {
    return static_cast<std::uint32_t>(places_.size());
  }

  std::vector<std::size_t> places_;  // by number: rules of the family only are numbered
  RuleSets sets_;
  PrefixSets sources_;
  PrefixSets destinations_;
  std::array<RuleSet, 256> protocols_{};
  std::array<RuleSet, 64> dscps_{};
};

}  // namespace SoftChip
