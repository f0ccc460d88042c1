#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "L3/VrfName.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// The entries of a table with actions as keys that name a given VRF in any field.
///
/// The cost of a VRF change must depend on the actions that name the VRF, not on the size of the
/// table. So each name has a contiguous list of the entries that name it. An entry is identified by
/// its position in the table. It has three places, one for each name of its action, and is in the
/// list of each distinct name once: a repeated name uses only the place of its first field. The
/// empty name has a list, too. The lists change only on insertion and deletion of entries. The
/// number of a name is the index of its list.
///
/// An entry is appended at the end of a list. A removed entry leaves a hole. Holes at the end are
/// removed at once, others when they are half of the list. During a walk the list keeps its holes.
/// A walk goes from the end to the front, so the table may change during it: it visits exactly once
/// every entry that was present at its start and is not removed before its turn, and no later
/// entry. The order is that of insertion, the latest first.
class ActionsByVrf {
 public:
  using Position = std::uint32_t;
  static constexpr Position none = 0xffffffff;

  ActionsByVrf() = default;
  ActionsByVrf(const ActionsByVrf&) = delete;
  ActionsByVrf& operator=(const ActionsByVrf&) = delete;

  /// Adds the entry at `at`, whose key is `action`.
  void insert(Position at, const VrfAction& action);
  /// Removes the entry at `at`, which was added with `action`.
  void erase(Position at, const VrfAction& action) noexcept;
  void clear() noexcept;

 private:
  static constexpr unsigned fields = 3;

  // Three places per position, one for each name field.
  using Place = std::uint32_t;
  struct List {
    std::vector<Place> places;  // `none` is a hole
    std::uint32_t entries = 0;  // number of places that are not holes
    std::uint32_t walks = 0;
  };

 public:
  /// A walk over the entries that name one VRF. The index must outlive it.
  class Walk {
   public:
    Walk(ActionsByVrf& actions, const L3::VrfName& vrfName) noexcept : actions_(actions) {
      if (vrfName.number() >= actions.lists_.size()) return;
      list_ = &actions.lists_[vrfName.number()];
      at_ = list_->places.size();
      ++list_->walks;
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk() {
      if (list_ == nullptr) return;
      --list_->walks;
      actions_.tidy(*list_);
    }

    /// The next entry; `none` at the end.
    [[nodiscard]] Position next() noexcept {
      while (at_ != 0) {
        if (const Place place = list_->places[--at_]; place != none) return place / fields;
      }
      return none;
    }
    /// Whether the entry that `next` returned last is still in the list.
    [[nodiscard]] bool isThere() const noexcept { return list_->places[at_] != none; }

   private:
    ActionsByVrf& actions_;
    List* list_ = nullptr;  // null if no action has named the VRF
    std::size_t at_ = 0;
  };

 private:
  static Place place(Position at, unsigned field) noexcept { return at * fields + field; }
  void link(Place place, const L3::VrfName& name);
  void unlink(Place place, const L3::VrfName& name) noexcept;
  void tidy(List& list) noexcept;
  void closeHoles(List& list) noexcept;

  // Invariant: place p of an entry is at `indexInList_[p]` of the list of its name. The number of a
  // name is reused only if no entry has the name, so its list has only holes then.
  std::deque<List> lists_;  // by the numbers of names; walks point to its elements
  std::vector<std::uint32_t> indexInList_;
};

}  // namespace ZelVrfSelectionPolicy
