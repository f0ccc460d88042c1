#pragma once

#include <utility>

#include "Mox/HashMap2018.h"
#include "Mox/Ptr.h"
#include "Quarry/Slab.h"
#include "Velo/Publisher.h"
#include "ZelVrfSelectionPolicy/tables/ActionsByVrf.h"
#include "ZelVrfSelectionPolicy/values/HwStatus.h"
#include "ZelVrfSelectionPolicy/values/VrfAction.h"

namespace ZelVrfSelectionPolicy {

/// The last reported outcome for each VRF action that has a hardware VRF resource.
///
/// Written by the VRF state machine alone, read by whoever shows or waits for the outcome. That an
/// action has an entry is also the record that its resource exists, programmed or not. Subscribers
/// are told, after each real change, the key of the entry that changed; they may change the table
/// from inside the call, and may release it.
///
///     if (statuses->hwStatusHas(action)) show(statuses->hwStatus(action));
class [[gnu::visibility("default")]] VrfHwStatus final : public Mox::PtrInterface,
                                                         public Quarry::SlabAllocated<VrfHwStatus> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfHwStatus";
  static const Mox::Type moxType;
  /// Number of the attribute `hwStatus`, published with each change.
  static constexpr Mox::AttributeId hwStatusAttribute = 130;

  using HwStatuses = Mox::HashMap2018<VrfAction, HwStatus, 0x7b6bc380>;

  /// The change publisher's descriptor, of kind `publisher`.
  [[nodiscard]] Velo::NotifieeListDescriptor notifieeList() const override;
  [[nodiscard]] const Mox::Type* fwkType() const override;
  ~VrfHwStatus() override;

  /// A new empty table.
  [[nodiscard]] static Mox::Ptr<VrfHwStatus> VrfHwStatusIs();

  /// Stores `status` for `action`, inserting it if absent.
  void hwStatusIs(const VrfAction& action, const HwStatus& status);
  /// Sees to it that inserting a status for `action` needs no memory, if it is inserted next.
  void makeRoomFor(const VrfAction& action) {
    actionsByVrf_.makeRoomFor(hwStatus_.makeRoom(), action);
  }
  /// Removes the entry; returns the status that it had, a default one if absent.
  HwStatus hwStatusDel(const VrfAction& action);
  /// Removes every entry, telling subscribers of each.
  void hwStatusDelAll();

  /// The status of `action`, a default one if absent.
  [[nodiscard]] HwStatus hwStatus(const VrfAction& action) const noexcept;
  [[nodiscard]] bool hwStatusHas(const VrfAction& action) const noexcept;
  /// The whole collection, to look at and walk over.
  [[nodiscard]] const HwStatuses& hwStatus() const noexcept {
    return hwStatus_;
  }

  /// Subscribing does not change the table, so it is open to those who may only read.
  [[nodiscard]] Velo::Publisher& publisher() const noexcept {
    return publisher_;
  }

  /// A walk over the actions that name a VRF in any field, which looks at no others. It holds the
  /// table, and survives any change of it: see `ActionsByVrf`.
  ///
  ///     VrfHwStatus::ActionsNaming actions(statuses, "red");
  ///     while (actions.advance()) actions.hwStatusIs(outcomeOf(actions.action()));
  class [[gnu::visibility("default")]] ActionsNaming {
   public:
    ActionsNaming(Mox::Ptr<VrfHwStatus> statuses, const L3::VrfName& vrfName) noexcept
        : statuses_(std::move(statuses)), walk_(statuses_->actionsByVrf_, vrfName) {
      ++statuses_->walks_;
    }
    ActionsNaming(const ActionsNaming&) = delete;
    ActionsNaming& operator=(const ActionsNaming&) = delete;
    ~ActionsNaming() {
      if (--statuses_->walks_ == 0) statuses_->discardWithdrawn();
    }

    /// Goes on to the next action; false at the end.
    [[nodiscard]] bool advance() noexcept {
      at_ = walk_.next();
      if (at_ == HwStatuses::none) return false;
      action_ = &statuses_->hwStatus_.key(at_);
      const HwStatuses::Position soon = walk_.ahead(fetchedAhead);
      if (soon != HwStatuses::none) statuses_->hwStatus_.prefetch(soon);
      return true;
    }
    /// The action that it stands on, valid as long as the walk, whatever becomes of its entry.
    [[nodiscard]] const VrfAction& action() const noexcept {
      return *action_;
    }
    /// Stores `status` for it, unless its entry has been removed meanwhile. As
    /// `VrfHwStatus::hwStatusIs`, without a search.
    void hwStatusIs(const HwStatus& status) {
      if (walk_.isThere()) statuses_->presentIs(at_, status);
    }

   private:
    // About as many entries as are programmed while one is fetched from main memory.
    static constexpr std::size_t fetchedAhead = 6;

    Mox::Ptr<VrfHwStatus> statuses_;
    ActionsByVrf::Walk walk_;
    HwStatuses::Position at_ = HwStatuses::none;
    const VrfAction* action_ = nullptr;  // at that position
  };

  /// The creation or deletion of one action's resource while it is under way.
  ///
  /// The chip and the subscribers of both tables are called in its course. If the count of the same
  /// action changes meanwhile, be it by the removal of the count entry that is part of a deletion,
  /// the change is noted here, and left to whoever began. It belongs to the table, so that it holds
  /// for every state machine that works on it. Transitions nest like the calls that they are in.
  /// The action's record must outlive the transition.
  class [[gnu::visibility("default")]] Transition {
   public:
    enum class Kind { creation, deletion };

    Transition(VrfHwStatus & statuses, const VrfAction& action, Kind kind) noexcept;
    Transition(VrfHwStatus & statuses, const VrfAction&& action, Kind kind) = delete;
    Transition(const Transition&) = delete;
    Transition& operator=(const Transition&) = delete;
    ~Transition();

    [[nodiscard]] Kind kind() const noexcept {
      return kind_;
    }
    [[nodiscard]] bool countChanged() const noexcept {
      return countChanged_;
    }
    void noteCountChange() noexcept {
      countChanged_ = true;
    }

   private:
    friend class VrfHwStatus;
    Mox::Ptr<VrfHwStatus> statuses_;
    const VrfAction& action_;
    Kind kind_;
    bool countChanged_ = false;
    Transition* outer_;
  };
  /// The transition of `action` that is under way, null when there is none.
  [[nodiscard]] Transition* transition(const VrfAction& action) const noexcept {
    Transition* underWay = innermostTransition_;
    while (underWay != nullptr && underWay->action_ != action)
      underWay = underWay->outer_;
    return underWay;
  }

  /// The place for the outcome of a call of the chip that is about to be made: the entry of an
  /// action, or room for one if there is none. It must not outlive the table.
  class [[gnu::visibility("default")]] EntryWatch {
   public:
    EntryWatch(VrfHwStatus & statuses, const VrfAction& action);
    EntryWatch(const EntryWatch&) = delete;
    EntryWatch& operator=(const EntryWatch&) = delete;
    ~EntryWatch();

    /// Whether an entry of the action has been removed since, even if there is one again.
    [[nodiscard]] bool wasRemoved() const noexcept {
      return wasRemoved_;
    }
    /// Stores `status` for the action, unless that is so.
    void hwStatusIs(const HwStatus& status);

   private:
    friend class VrfHwStatus;
    VrfHwStatus& statuses_;
    VrfAction action_;
    HwStatuses::Position at_;
    bool wasRemoved_ = false;
    EntryWatch* outer_;
  };

 private:
  void presentIs(HwStatuses::Position at, const HwStatus& status) {
    if (!(hwStatus_.value(at) == status)) changeTo(at, status);
  }
  void changeTo(HwStatuses::Position at, const HwStatus& status);
  void publish(HwStatuses::Position at);

  HwStatus withdraw(const VrfAction& action);
  void noteWithdrawn(HwStatuses::Position at) noexcept;
  // Ends the entries that were removed while there were walks.
  void discardWithdrawn() noexcept;
  void noteRemoval(const VrfAction& action) noexcept;

  HwStatuses hwStatus_;
  ActionsByVrf actionsByVrf_;
  unsigned walks_ = 0;
  // Of the entries removed while there were walks; each keeps the position of the next as its note
  // in `actionsByVrf_`, so that to remove one takes no memory.
  HwStatuses::Position firstWithdrawn_ = HwStatuses::none;
  HwStatuses::Position lastWithdrawn_ = HwStatuses::none;
  Transition* innermostTransition_ = nullptr;
  EntryWatch* innermostWatch_ = nullptr;
  mutable Velo::Publisher publisher_;
};

/// A new empty table of statuses.
[[nodiscard, gnu::visibility("default")]] Mox::Ptr<VrfHwStatus> vrfHwStatusFactory();

}  // namespace ZelVrfSelectionPolicy
