#pragma once

#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Follower.h"
#include "Velo/Publisher.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// How many users each VRF action has.
///
/// Those who use an action (rules, interfaces) count themselves here, one at a time; the VRF state
/// machine follows: the first user brings a hardware VRF resource into being, the last one leaving
/// ends it. The table holds no policy. It stores counts, unsigned 32-bit numbers that wrap, and
/// tells its subscribers, after each real change, the key of the entry that changed. A subscriber
/// may change the table again from inside the call, and may release it.
///
///     Mox::Ptr<VrfHwConfig> users = vrfHwConfigFactory();
///     users->vrfRefCountInc(action, 1);     // 1: the resource is created
///     users->vrfRefCountDec(action, 1);     // 0: it is deleted, and the entry with it
class [[gnu::visibility("default")]] VrfHwConfig final : public Mox::PtrInterface,
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
  /// Removes the entry if its count is 0.
  void vrfRefCountDelUnused(const VrfAction& action);
  /// Removes every entry, telling subscribers of each.
  void vrfRefCountDelAll();

  /// The count of `action`, 0 if absent.
  [[nodiscard]] unsigned vrfRefCount(const VrfAction& action) const noexcept;
  /// The whole collection, to look at and walk over.
  [[nodiscard]] const VrfRefCounts& vrfRefCount() const noexcept {
    return vrfRefCount_;
  }

  /// Says that the resource of `action` has ended by the changes of its count that subscribers are
  /// being told of. It belongs to the table, so that of several state machines on it the one that
  /// was told first ends the resource, and the others, who are told next, find that done.
  void resourceEndedIs(const VrfAction& action) noexcept;
  /// Whether that was said since the change that a subscriber is being told of, by whom it is
  /// asked.
  [[nodiscard]] bool resourceEnded() const noexcept;

  /// Subscribing does not change the table, so it is open to those who may only read.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept {
    return publisher_;
  }
  /// Those who are asked before an action gets its first user: before a count becomes 1.
  [[nodiscard]] Velo::FollowerList& followers() const noexcept {
    return followers_;
  }

 private:
  class Telling;

  void countIs(VrfRefCounts::Position at, unsigned count);
  void makeRoomFor(const VrfAction& action, unsigned count) const {
    if (count == 1) followers_.makeRoomFor(vrfRefCountAttribute, &action, &count);
  }
  void publish(const VrfAction& action, const unsigned* count);

  VrfRefCounts vrfRefCount_;
  Telling* innermostTelling_ = nullptr;
  mutable Velo::FollowerList followers_;
  mutable Velo::Publisher publisher_;
};

/// A new empty table of users.
[[nodiscard, gnu::visibility("default")]] Mox::Ptr<VrfHwConfig> vrfHwConfigFactory();

}  // namespace ZelVrfSelectionPolicy
