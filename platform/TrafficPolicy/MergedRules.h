#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
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
/// Finding a place and changing an entry cost the logarithm of the number of entries. Interfaces
/// with the same change share its layout.
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

  using Entries = std::vector<Entry>;
  /// The entries of a change, in their order.
  using Layout = std::shared_ptr<const Entries>;

  [[nodiscard]] static Layout layoutOf(const RuleListChange& change);
  explicit MergedRules(Layout layout);

  [[nodiscard]] std::size_t size() const noexcept { return layout_->size(); }
  [[nodiscard]] const Entry& operator[](std::size_t at) const { return (*layout_)[at]; }
  /// Whether the hardware holds an entry of the old list that does not stay.
  [[nodiscard]] bool hasOldRules() const noexcept { return oldRules_ > 0; }
  [[nodiscard]] bool isHeld(std::size_t at) const { return held_[at]; }
  void heldIs(std::size_t at, bool held);
  /// The number of held entries in front of the entry.
  [[nodiscard]] std::size_t place(std::size_t at) const;

 private:
  Layout layout_;
  std::vector<bool> held_;
  std::vector<std::uint32_t> sums_;  // a binary indexed tree of `held_`
  std::size_t oldRules_ = 0;         // held entries that are old
};

}  // namespace TrafficPolicy
