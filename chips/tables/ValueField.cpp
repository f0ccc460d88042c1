#include "chips/tables/ValueField.h"

#include <cstddef>

namespace ChipTables {

bool ValueField::ruleIs(std::uint32_t number, const Values& values) {
  std::size_t missing = 0;
  for (std::size_t value = 0; value < values.size(); ++value)
    missing += values[value] && table_[value] == zelNoRules ? 1 : 0;
  if (missing > sets_.available()) return false;
  for (std::size_t value = 0; value < values.size(); ++value) {
    if (!values[value]) continue;
    if (table_[value] == zelNoRules) stores_.store(table_[value], sets_.take().value());
    sets_.memberIs(table_[value], number, true);
  }
  return true;
}

void ValueField::ruleDel(std::uint32_t number, const Values& values) {
  for (std::size_t value = 0; value < values.size(); ++value) {
    if (!values[value]) continue;
    const std::uint32_t set = table_[value];
    sets_.memberIs(set, number, false);
    if (!sets_.isEmpty(set)) continue;
    stores_.store(table_[value], zelNoRules);
    sets_.giveBack(set);
  }
}

}  // namespace ChipTables
