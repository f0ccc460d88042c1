#pragma once

#include <cstdint>
#include <span>

#include "chips/tables/RuleConditions.h"
#include "chips/tables/RuleSets.h"
#include "chips/tables/Stores.h"

namespace ChipTables {

/// Writes a value field of a classifier: for each value the set of the rules that name it.
///
/// A value has a set exactly while a rule names it.
class ValueField final {
 public:
  using Values = RuleConditions::Values;

  /// `table` has the set of each value. All must outlive the field.
  ValueField(std::span<__u32, 256> table, RuleSets& sets, const Stores& stores)
      : table_(table), sets_(sets), stores_(stores) {}

  /// The rule of the number names the values. Returns false if there is no room. Then nothing has
  /// changed.
  [[nodiscard]] bool ruleIs(std::uint32_t number, const Values& values);
  /// Takes back `ruleIs` with the same arguments.
  void ruleDel(std::uint32_t number, const Values& values);

 private:
  std::span<__u32, 256> table_;
  RuleSets& sets_;
  const Stores& stores_;
};

}  // namespace ChipTables
