#pragma once

#include <cstdint>
#include <deque>
#include <vector>

#include "L3/VrfName.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// Which entries of a table keyed by actions name a given VRF, in whichever field.
///
/// A change of a VRF must cost what the actions that name it cost, not what the table holds; so
/// there is a list, in one piece, of the entries that name one VRF. An entry is known by its
/// position in the table. It has three places, one for each name of its action, and is in the list
/// of each distinct name once: a name that an earlier field has already does not use its place. The
/// empty name is a name like any other. The lists change on insertion and deletion of entries only,
/// and are found by the number of the name.
///
/// A list grows at its end. What leaves it leaves a hole; holes at the end go at once, and others
/// when they are half of the list. While a walk is on a list it keeps its holes, so a walk, which
/// goes from the end to the front, survives whatever happens to the table meanwhile: it visits
/// every entry that was there at its start and is there at its turn, exactly once, and none that
/// came later. The order is that of insertion, the latest first.
class ActionsByVrf {
 public:
  using Position = std::uint32_t;
  static constexpr Position none = 0xffffffff;

  ActionsByVrf() = default;
  ActionsByVrf(const ActionsByVrf&) = delete;
  ActionsByVrf& operator=(const ActionsByVrf&) = delete;

  /// Enters the entry at `at`, whose key is `action`.
  void insert(Position at, const VrfAction& action);
  /// Takes out the entry at `at`, which was entered with `action`.
  void erase(Position at, const VrfAction& action) noexcept;
  void clear() noexcept;

 private:
  static constexpr unsigned fields = 3;

  // Three places per position, one for each name field.
  using Place = std::uint32_t;
  struct List {
    std::vector<Place> places;  // `none` is a hole
    std::uint32_t entries = 0;  // in it, holes aside
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

    /// The next entry, `none` at the end.
    [[nodiscard]] Position next() noexcept {
      while (at_ != 0) {
        if (const Place place = list_->places[--at_]; place != none) return place / fields;
      }
      return none;
    }
    /// Whether the entry that `next` returned last has not been taken out since.
    [[nodiscard]] bool isThere() const noexcept { return list_->places[at_] != none; }

   private:
    ActionsByVrf& actions_;
    List* list_ = nullptr;  // unless somebody has named the VRF
    std::size_t at_ = 0;
  };

 private:
  static Place place(Position at, unsigned field) noexcept { return at * fields + field; }
  void link(Place place, const L3::VrfName& name);
  void unlink(Place place, const L3::VrfName& name) noexcept;
  void tidy(List& list) noexcept;
  void closeHoles(List& list) noexcept;

  // Invariant: place p of an entry is at `indexInList_[p]` of the list of its name. A name's number
  // passes to another name only when no entry has it, so that its list has nothing but holes.
  std::deque<List> lists_;  // by the numbers of names; a walk points into it
  std::vector<std::uint32_t> indexInList_;
};

}  // namespace ZelVrfSelectionPolicy
