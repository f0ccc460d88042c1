#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "PolicyMap/AclRule.h"
#include "chips/packet/PacketHeader.h"
#include "chips/soft/classify/ByteField.h"
#include "chips/soft/classify/PrefixField.h"
#include "chips/soft/classify/RangeField.h"
#include "chips/soft/classify/RuleSets.h"

namespace Chips {

/// Finds the first rule that a packet of one family matches, among thousands, in the time of a few
/// comparisons.
///
/// Each field of the packet gives the set of rules that it satisfies. The lowest rule in all sets
/// is the answer. A field that no rule compares is not looked up.
class FamilyClassifier final {
 public:
  /// Compiles those rules that packets of the family can match.
  FamilyClassifier(std::span<const PolicyMap::AclRule> rules, Ip::Family family);

  /// The place in the rules of the first that matches. Precondition: the header is of the family.
  [[nodiscard]] std::optional<std::size_t> firstMatch(const PacketHeader& header) const;

 private:
  using Rules = std::span<const PolicyMap::AclRule>;
  class Chosen;

  void compileAddresses(Rules rules);
  void compileBytes(Rules rules);
  void compileRanges(Rules rules);
  void compileFragments(Rules rules);
  void addUpperLayer(const PacketHeader& header, Chosen& chosen) const;
  [[nodiscard]] const PolicyMap::AclMatch& matchOf(Rules rules, std::uint32_t number) const {
    return *rules[places_[number]].match;
  }
  [[nodiscard]] std::uint32_t count() const noexcept {
    return static_cast<std::uint32_t>(places_.size());
  }

  std::vector<std::size_t> places_;  // by number: rules of the family only are numbered
  RuleSets sets_;
  PrefixField sources_;
  PrefixField destinations_;
  PrefixField sourceSets_;
  PrefixField destinationSets_;
  ByteField protocols_;
  ByteField dscps_;
  ByteField hopLimits_;
  ByteField tcpFlags_;
  RangeField lengths_;
  RangeField fragmentOffsets_;
  RangeField sourcePorts_;
  RangeField destinationPorts_;
  RuleSet notForFragmentsOnly_ = emptyRuleSet;
  RuleSet forLaterFragments_ = emptyRuleSet;  // as far as ports and flags are concerned
  bool isFragmentUsed_ = false;
};

}  // namespace Chips
