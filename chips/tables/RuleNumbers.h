#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "chips/tables/layout/RuleSet.h"

namespace ChipTables {

/// Which rule numbers are free, and which of them rules get, so that rules are in the order of
/// their numbers.
///
/// Numbers have gaps, so that most rules find a free number between those of their neighbours.
/// Where there is none, some neighbours get new numbers, too. These lie in the smallest surrounding
/// window that has many free numbers, so renumbering costs little for each rule. A number that a
/// rule has left is not free until its owner says so.
class RuleNumbers final {
 public:
  /// The most rules. Half of the numbers stay free, so that all rules can get new numbers at once.
  static constexpr std::size_t capacity = zelRules / 2 - 1;
  /// By place, so ascending.
  using Numbers = std::vector<std::uint32_t>;

  /// New numbers for some rules that follow each other. The new rule is one of them.
  struct Plan {
    std::size_t first;  // the place of the first of them, in the list with the new rule
    Numbers numbers;
  };

  RuleNumbers() { free_.set(); }

  /// Numbers for a new rule in front of the rule at `place`. Nothing if too few are free. That
  /// does not happen while at most `capacity` numbers are taken.
  [[nodiscard]] std::optional<Plan> planFor(const Numbers& present, std::size_t place) const;

  void take(std::uint32_t number) { free_.reset(number); }
  void giveBack(std::uint32_t number) { free_.set(number); }
  [[nodiscard]] bool isFree(std::uint32_t number) const { return free_.test(number); }

 private:
  [[nodiscard]] Numbers freeFrom(std::uint32_t first, std::uint32_t end) const;

  std::bitset<zelRules> free_;
};

}  // namespace ChipTables
