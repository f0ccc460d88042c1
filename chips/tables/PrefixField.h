#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <vector>

#include "Ip/Prefix.h"
#include "chips/tables/PrefixCondition.h"
#include "chips/tables/RuleElements.h"
#include "chips/tables/RuleSets.h"

namespace ChipTables {

/// Writes a prefix field of a classifier: elements with sets of rules, among which a packet
/// searches the longest that covers its value.
///
/// Every prefix that a rule names, to include or to exclude values, is an element. So a rule
/// matches either all values of an element that are in no longer element, or none of them. The set
/// of the element has the rules that match them.
///
/// A new element begins with the set of the element that covers it. An element is removed when no
/// rule names it, and then its set equals that again. So neither changes what a packet finds.
class PrefixField final {
 public:
  /// The sets and the elements must outlive the field.
  PrefixField(std::uint32_t classifier, std::uint32_t field, RuleSets& sets,
              RuleElements& elements) noexcept
      : classifier_(classifier), field_(field), sets_(sets), elements_(elements) {}

  /// The rule of the number has the condition. Returns false if there is no room. Then nothing has
  /// changed.
  [[nodiscard]] bool ruleIs(std::uint32_t number, const PrefixCondition& condition);
  /// Takes back `ruleIs` with the same arguments.
  void ruleDel(std::uint32_t number, const PrefixCondition& condition);

 private:
  struct Element {
    std::uint32_t set = zelNoRules;
    std::uint32_t names = 0;  // by rules
  };
  using Elements = std::map<Ip::Prefix, Element>;

  [[nodiscard]] bool nameIs(const Ip::Prefix& prefix);
  void nameDel(const Ip::Prefix& prefix);
  [[nodiscard]] std::uint32_t setAbove(const Ip::Prefix& prefix) const;
  void memberIs(std::uint32_t number, const PrefixCondition& condition, bool isMember);
  [[nodiscard]] std::vector<std::uint32_t> setsOf(const PrefixCondition& condition) const;
  void forEachWithin(const Ip::Prefix& prefix,
                     const std::function<void(const Elements::value_type&)>& visit) const;
  [[nodiscard]] RuleElement elementOf(const Ip::Prefix& prefix) const {
    return {classifier_, field_, prefix};
  }

  std::uint32_t classifier_;
  std::uint32_t field_;
  RuleSets& sets_;
  RuleElements& elements_;
  Elements present_;  // an element comes after those that cover it
};

}  // namespace ChipTables
