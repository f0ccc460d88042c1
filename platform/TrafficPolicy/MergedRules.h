#pragma once

#include <cstddef>
#include <vector>

#include "TrafficPolicy/RuleListChange.h"

namespace TrafficPolicy {

/// The old and the new rules of an interface in one list, in which both keep their order. It knows
/// which of them the hardware holds at the moment, and so the place of each.
///
/// A rule that stays is one entry. A rule that moves is two: its old place and its new place, of
/// which the hardware holds one. Between two rules that stay the old ones come first. At the
/// beginning the hardware holds the entries of the old list.
///
/// Finding a place and changing an entry cost the logarithm of the number of entries.
class MergedRules final {
 public:
  static constexpr std::size_t none = RuleListChange::none;

  struct Entry {
    std::size_t before = none;  // index in the old list
    std::size_t after = none;   // index in the new list
    std::size_t other = none;   // of a rule that moves, the entry of its other place

    [[nodiscard]] bool stays() const noexcept { return before != none && after != none; }
    [[nodiscard]] bool isOld() const noexcept { return after == none; }
    [[nodiscard]] bool moves() const noexcept { return other != none; }
  };

  explicit MergedRules(const RuleListChange& change);

  [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
  [[nodiscard]] const Entry& operator[](std::size_t at) const { return entries_[at]; }
  [[nodiscard]] bool isHeld(std::size_t at) const { return held_[at]; }
  void heldIs(std::size_t at, bool held);
  /// The number of held entries in front of the entry.
  [[nodiscard]] std::size_t place(std::size_t at) const;

 private:
  void add(const Entry& entry);
  void linkMoves(const RuleListChange& change);

  std::vector<Entry> entries_;
  std::vector<bool> held_;
  std::vector<std::size_t> sums_;  // a binary indexed tree of `held_`
};

}  // namespace TrafficPolicy
