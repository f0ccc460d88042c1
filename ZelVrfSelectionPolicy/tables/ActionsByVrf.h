#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "L3/VrfName.h"
#include "Mox/HashMap2018.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// Which entries of a table keyed by actions name a given VRF, in whichever field.
///
/// A change of a VRF must cost what the actions that name it cost, not what the table holds; so
/// the entries that name one VRF are linked into a list. An entry is known by its position in the
/// table. It has three places, one for each name of its action, and is in the list of each distinct
/// name once: a name that an earlier field has already does not use its place. The empty name is a
/// name like any other. The lists change on insertion and deletion of entries only.
///
/// A walk survives whatever happens to the table meanwhile: it visits every entry that was there
/// at its start and is there at its turn, exactly once, and none that came later, since new
/// entries go to the front of the lists. The order is that of insertion, the latest first.
class ActionsByVrf {
 public:
  using Position = std::uint32_t;
  static constexpr Position none = 0xffffffff;

  ActionsByVrf() = default;
  ActionsByVrf(const ActionsByVrf&) = delete;
  ActionsByVrf& operator=(const ActionsByVrf&) = delete;

  /// Enters the entry at `at`, whose key is `action`. Changes nothing when it throws.
  void insert(Position at, const VrfAction& action);
  /// Takes out the entry at `at`, which was entered with `action`.
  void erase(Position at, const VrfAction& action) noexcept;
  void clear() noexcept;

  /// A walk over the entries that name one VRF. The index must outlive it.
  class Walk {
   public:
    Walk(ActionsByVrf& actions, const L3::VrfName& vrfName) noexcept;
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk();

    /// The next entry, `none` at the end.
    [[nodiscard]] Position next() noexcept;

   private:
    friend class ActionsByVrf;
    ActionsByVrf& actions_;
    std::uint32_t next_;
    Walk* outer_;
  };

 private:
  static constexpr unsigned fields = 3;

  // Three places per position, one for each name field.
  using Place = std::uint32_t;
  struct Links {
    Place previous = none;
    Place next = none;
  };

  static Place place(Position at, unsigned field) noexcept { return at * fields + field; }
  void link(Place place, const L3::VrfName& name);
  void unlink(Place place, const L3::VrfName& name) noexcept;

  Mox::HashMap2018<L3::VrfName, Place, 0x1d8e4e27> first_;
  std::vector<Links> links_;
  Walk* innermost_ = nullptr;
};

}  // namespace ZelVrfSelectionPolicy
