#pragma once

#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Export.h"
#include "Velo/Publisher.h"
#include "Velo/ScopeStack.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// The number of users of each VRF action.
///
/// A user of an action (a rule, an interface) increments the count, and decrements it later. The
/// VRF state machine creates the hardware VRF resource for the first user, and deletes it after the
/// last. The table has no policy: it stores counts, which are unsigned 32-bit numbers that wrap.
/// After each real change it notifies its subscribers of the key of the changed entry. During the
/// call a subscriber may change the table again, and may release it.
///
///     Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
///     users->vrfRefCountInc(action, 1);     // 1: the resource is created
///     users->vrfRefCountDec(action, 1);     // 0: it is deleted, and the entry with it
class ZEL_EXPORT VrfHwConfig final : public Mox::PtrInterface,
                                     public Quarry::SlabAllocated<VrfHwConfig> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfHwConfig";
  static const Mox::Type moxType;
  /// Number of the attribute `vrfRefCount`, published with each change.
  static constexpr Mox::AttributeId vrfRefCountAttribute = 130;

  using VrfRefCounts = Mox::HashMap2018<VrfAction, unsigned, 0xca67d662>;

  /// The change publisher's descriptor, of kind `publisher`.
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfHwConfig() override;

  /// A new empty table.
  [[nodiscard]] static Mox::Ptr<VrfHwConfig> VrfHwConfigIs();

  /// Sets the count of `action`, and inserts it if absent, also with 0. An entry stays until it is
  /// deleted.
  void vrfRefCountIs(const VrfAction& action, unsigned count);
  /// Adds `users` to the count, which is 0 for an absent action, and returns the new count.
  unsigned vrfRefCountInc(const VrfAction& action, unsigned users);
  /// Subtracts `users` from the count, which is 0 for an absent action, and returns the new count.
  unsigned vrfRefCountDec(const VrfAction& action, unsigned users);
  /// Removes the entry and returns its count; 0 if absent.
  unsigned vrfRefCountDel(const VrfAction& action);
  /// Removes every entry, and notifies subscribers of each.
  void vrfRefCountDelAll();

  /// The count of `action`; 0 if absent.
  [[nodiscard]] unsigned vrfRefCount(const VrfAction& action) const noexcept;
  /// The collection, for reading and iteration.
  [[nodiscard]] const VrfRefCounts& vrfRefCount() const noexcept { return vrfRefCount_; }

  /// Subscribing does not change the table, so it needs no write access.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  friend class VrfResources;  // several may use one table, and share the state below
  struct Change;
  using Changes = Velo::ScopeStack<Change>;

  ZEL_HIDDEN VrfHwConfig();
  ZEL_HIDDEN void countIs(VrfRefCounts::Position at, unsigned count);
  ZEL_HIDDEN bool vrfRefCountDelUnused(const VrfAction& action);
  ZEL_HIDDEN void publish(VrfRefCounts::Position at, const unsigned* count);

  VrfRefCounts vrfRefCount_;
  Changes changes_;  // whose notifications are in progress
  mutable Velo::Publisher publisher_;
};

/// A new empty table of users.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<VrfHwConfig> vrfHwConfigFactory();

}  // namespace ZelVrfSelectionPolicy
