#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "chips/tables/PrefixField.h"
#include "chips/tables/RuleConditions.h"
#include "chips/tables/RuleElements.h"
#include "chips/tables/RuleSets.h"
#include "chips/tables/Stores.h"
#include "chips/tables/ValueField.h"
#include "chips/tables/layout/Classifier.h"

namespace ChipTables {

/// Writes the fields of a classifier: which rule numbers each value of a packet satisfies.
///
/// It is for its caller that a packet obeys a number only while the rule of the number is in force.
class RuleFields final {
 public:
  /// All must outlive the fields.
  RuleFields(ZelClassifier& classifier, std::uint32_t index, RuleSets& sets, RuleElements& elements,
             const Stores& stores);

  /// The rule of the number has the conditions. Returns false if there is no room. Then nothing has
  /// changed. There is room if another number has the same conditions.
  [[nodiscard]] bool ruleIs(std::uint32_t number, const RuleConditions& conditions);
  /// Takes back `ruleIs` with the same arguments.
  void ruleDel(std::uint32_t number, const RuleConditions& conditions);

 private:
  [[nodiscard]] bool conditionIs(std::uint32_t field, std::uint32_t number,
                                 const RuleConditions& conditions);
  void conditionDel(std::uint32_t field, std::uint32_t number, const RuleConditions& conditions);
  void comparedIs(std::uint32_t field, bool isCompared);

  ZelClassifier& classifier_;
  const Stores& stores_;
  std::vector<ValueField> values_;                          // by field
  std::vector<PrefixField> prefixes_;                       // by field, from `zelValueFields` on
  std::array<std::uint32_t, zelLookedUpFields> compare_{};  // how many numbers compare the field
};

}  // namespace ChipTables
