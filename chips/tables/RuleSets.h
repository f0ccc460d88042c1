#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "chips/tables/Slots.h"
#include "chips/tables/Stores.h"
#include "chips/tables/layout/RuleSet.h"

namespace ChipTables {

/// Adds the number to the set, or removes it.
void memberIs(ZelRuleSet& set, std::uint32_t number, bool isMember, const Stores& stores);

/// The sets of rules that values and elements have, in memory that packets read.
///
/// A set that was given back is not handed out again before a grace period has ended.
class RuleSets final {
 public:
  /// There are at least two sets: `zelNoRules` and `zelAllRules` are in the memory, too. The memory
  /// and the clock must outlive the sets.
  RuleSets(std::span<ZelRuleSet> memory, const GraceClock& clock, Stores stores = Stores());

  /// A new set with the members of `like`. Nothing if the memory is full.
  [[nodiscard]] std::optional<std::uint32_t> take(std::uint32_t like = zelNoRules);
  void giveBack(std::uint32_t set);

  void memberIs(std::uint32_t set, std::uint32_t number, bool isMember) {
    ChipTables::memberIs(memory_[set], number, isMember, stores_);
  }
  [[nodiscard]] bool isEmpty(std::uint32_t set) const noexcept { return memory_[set].summary == 0; }
  /// How many sets are free now.
  [[nodiscard]] std::size_t available() const { return slots_.available(); }

 private:
  std::span<ZelRuleSet> memory_;
  Slots slots_;  // of the sets from `zelFirstRuleSet` on, with numbers from 1
  Stores stores_;
};

}  // namespace ChipTables
