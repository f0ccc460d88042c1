#pragma once

#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Export.h"
#include "Velo/Publisher.h"
#include "Velo/ScopeStack.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// How many users each VRF action has.
///
/// Those who use an action (rules, interfaces) count themselves here, one at a time; the VRF state
/// machine follows: the first user brings a hardware VRF resource into being, the last one leaving
/// ends it. The table holds no policy. It stores counts, unsigned 32-bit numbers that wrap, and
/// notifies its subscribers, after each real change, of the key of the entry that changed. A
/// subscriber may change the table again from inside the call, and may release it.
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

  /// Sets the count of `action`, inserting it if absent, also with 0: an entry stays until it is
  /// deleted.
  void vrfRefCountIs(const VrfAction& action, unsigned count);
  /// Adds `users` to the count, which is 0 if absent, and returns the new count.
  unsigned vrfRefCountInc(const VrfAction& action, unsigned users);
  /// Takes `users` from the count, which is 0 if absent, and returns the new count.
  unsigned vrfRefCountDec(const VrfAction& action, unsigned users);
  /// Removes the entry; returns the count that it had, 0 if absent.
  unsigned vrfRefCountDel(const VrfAction& action);
  /// Removes every entry, notifying subscribers of each.
  void vrfRefCountDelAll();

  /// The count of `action`, 0 if absent.
  [[nodiscard]] unsigned vrfRefCount(const VrfAction& action) const noexcept;
  /// The whole collection, to look at and walk over.
  [[nodiscard]] const VrfRefCounts& vrfRefCount() const noexcept { return vrfRefCount_; }

  /// Subscribing does not change the table, so it is open to those who may only read.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept { return publisher_; }

 private:
  friend class VrfResources;  // several may work on one table, and agree by what is below
  struct Change;
  using Changes = Velo::ScopeStack<Change>;

  ZEL_HIDDEN VrfHwConfig();
  ZEL_HIDDEN void countIs(VrfRefCounts::Position at, unsigned count);
  ZEL_HIDDEN bool vrfRefCountDelUnused(const VrfAction& action);
  ZEL_HIDDEN void publish(VrfRefCounts::Position at, const unsigned* count);

  VrfRefCounts vrfRefCount_;
  Changes changes_;  // that subscribers are being notified of
  mutable Velo::Publisher publisher_;
};

/// A new empty table of users.
[[nodiscard]] ZEL_EXPORT Mox::Ptr<VrfHwConfig> vrfHwConfigFactory();

}  // namespace ZelVrfSelectionPolicy
