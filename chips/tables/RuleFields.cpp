#include "chips/tables/RuleFields.h"

namespace ChipTables {
namespace {

bool isCompared(std::uint32_t field, const RuleConditions& conditions) {
  return field < zelValueFields ? conditions.values[field].has_value()
                                : conditions.prefixes[field - zelValueFields].has_value();
}

}  // namespace

RuleFields::RuleFields(ZelClassifier& classifier, std::uint32_t index, RuleSets& sets,
                       RuleElements& elements, const Stores& stores)
    : classifier_(classifier), stores_(stores) {
  for (auto& table : classifier.values)
    values_.emplace_back(std::span<__u32, 256>(table), sets, stores);
  for (std::uint32_t field = zelValueFields; field < zelLookedUpFields; ++field)
    prefixes_.emplace_back(index, field, sets, elements);
}

bool RuleFields::ruleIs(std::uint32_t number, const RuleConditions& conditions) {
  for (std::uint32_t field = 0; field < zelLookedUpFields; ++field) {
    if (conditionIs(field, number, conditions)) continue;
    while (field-- > 0)
      conditionDel(field, number, conditions);
    return false;
  }
  memberIs(classifier_.any[zelLaterFragmentField], number, conditions.matchesLaterFragments,
           stores_);
  return true;
}

void RuleFields::ruleDel(std::uint32_t number, const RuleConditions& conditions) {
  memberIs(classifier_.any[zelLaterFragmentField], number, false, stores_);
  for (std::uint32_t field = 0; field < zelLookedUpFields; ++field)
    conditionDel(field, number, conditions);
}

bool RuleFields::conditionIs(std::uint32_t field, std::uint32_t number,
                             const RuleConditions& conditions) {
  if (!isCompared(field, conditions)) {
    memberIs(classifier_.any[field], number, true, stores_);
    return true;
  }
  const bool fits = field < zelValueFields
                        ? values_[field].ruleIs(number, *conditions.values[field])
                        : prefixes_[field - zelValueFields].ruleIs(
                              number, *conditions.prefixes[field - zelValueFields]);
  if (fits && compare_[field]++ == 0) comparedIs(field, true);
  return fits;
}

void RuleFields::conditionDel(std::uint32_t field, std::uint32_t number,
                              const RuleConditions& conditions) {
  if (!isCompared(field, conditions)) {
    memberIs(classifier_.any[field], number, false, stores_);
    return;
  }
  if (--compare_[field] == 0) comparedIs(field, false);
  if (field < zelValueFields) {
    values_[field].ruleDel(number, *conditions.values[field]);
  } else {
    prefixes_[field - zelValueFields].ruleDel(number, *conditions.prefixes[field - zelValueFields]);
  }
}

void RuleFields::comparedIs(std::uint32_t field, bool isCompared) {
  const std::uint32_t bit = 1U << field;
  stores_.store(classifier_.compared,
                isCompared ? classifier_.compared | bit : classifier_.compared & ~bit);
}

}  // namespace ChipTables
