#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <utility>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "chips/interface/FaultPlan.h"
#include "chips/interface/FreeNumbers.h"
#include "chips/interface/HookCall.h"
#include "chips/programs/AskedPrograms.h"
#include "chips/programs/VrfProgram.h"

namespace Chips {

/// One entry of the chip's table.
struct VrfResource {
  std::uint32_t index = 0;  // the lowest that was free, from 1
  VrfProgram program;

  friend bool operator==(const VrfResource&, const VrfResource&) = default;
};

/// Prints the resource on one line, for example "resource 1: look up red(2) v4=[] v6=[]; ...".
/// Compare it with the program that the chip would make now to see what is stale.
std::ostream& operator<<(std::ostream& stream, const VrfResource& resource);

/// How often each hook was called, and how many calls reported a failure.
struct HookCounts {
  std::uint64_t creates = 0;
  std::uint64_t updates = 0;
  std::uint64_t deletes = 0;
  std::uint64_t failures = 0;

  friend bool operator==(const HookCounts&, const HookCounts&) = default;
};

/// The hooks of a chip: they make programs of actions, and resources hold the programs.
///
/// This keeps what every chip keeps, and a derived class writes resources into its hardware. An
/// action has at most one resource, and a resource has one action. There are never more resources
/// than the capacity was when the last of them was made. `deleteVrf` leaves nothing of the action
/// behind. The chip fails on request.
///
/// The outcome of a creation or update is the first of these that applies:
///
///   a planned fault                                  failureVrfResourceAlloc; the resource, if
///                                                    there is one, keeps its old program
///   a VRF that the action names has no hardware id   failureVrfResourceAlloc; the resource, if
///                                                    there was one, is released
///   the table is full                                failureVrfResourceExhausted
///   otherwise                                        what `write` returns; if it fails, the
///                                                    resource, if there is one, keeps its old
///                                                    program
///
/// A failed creation needs no clean-up. An update of an action without a resource tries to make
/// one.
class ChipVrfHelper : public ZelVrfSelectionPolicy::VrfHelper {
 public:
  using VrfAction = ZelVrfSelectionPolicy::VrfAction;
  using HwStatus = ZelVrfSelectionPolicy::HwStatus;
  using Resources = std::map<VrfAction, VrfResource>;

  ChipVrfHelper(const Velo::String& name, const ProgramInputs& inputs, std::uint32_t capacity);
  ~ChipVrfHelper() override;

  [[nodiscard]] HwStatus createVrf(const VrfAction& action) final;
  [[nodiscard]] HwStatus updateVrf(const VrfAction& action) final;
  void deleteVrf(const VrfAction& action) final;

  [[nodiscard]] std::uint32_t capacity() const noexcept { return capacity_; }
  /// A capacity below the number of resources removes none. It only admits no more.
  void capacityIs(std::uint32_t capacity) noexcept { capacity_ = capacity; }

  /// The outcome of a request for an action that names this VRF, while it has no hardware id.
  [[nodiscard]] static HwStatus outcomeWithoutId(const L3::VrfName& vrf);

  [[nodiscard]] FaultPlan& faultPlan() noexcept { return faultPlan_; }

  [[nodiscard]] const Resources& resources() const noexcept { return resources_; }
  /// The resource of the action, or null.
  [[nodiscard]] const VrfResource* resource(const VrfAction& action) const;
  /// What the resource of the action would be programmed with now.
  [[nodiscard]] VrfProgram currentProgram(const VrfAction& action) const;
  /// What the last hook call for each action asked for, accepted or refused.
  [[nodiscard]] const AskedPrograms& askedPrograms() const noexcept { return asked_; }
  /// Whether the last hook call for the action used other facts than the current ones. Then the
  /// resource may be stale, and the reason of a refusal may be out of date.
  [[nodiscard]] bool isOutOfDate(const VrfAction& action) const;
  [[nodiscard]] const HookCounts& hookCounts() const noexcept { return hookCounts_; }
  /// Replaces the observer, which is called after each hook call. An empty one ends observation.
  void hookObserverIs(HookObserver observer) { hookObserver_ = std::move(observer); }

 protected:
  /// Programs the resource. After success packets that use it follow the program. After a failure
  /// the hardware is unchanged.
  [[nodiscard]] virtual HwStatus write(const VrfResource& resource) = 0;
  /// Takes the resource out of use.
  virtual void erase(const VrfResource& resource) = 0;

 private:
  HwStatus program(Hook hook, const VrfAction& action);
  HwStatus programNow(const VrfAction& action);
  HwStatus make(const VrfAction& action, VrfProgram program);
  void release(const VrfAction& action);
  void notifyObserver(const HookCall& call) const;

  std::uint32_t capacity_;
  FaultPlan faultPlan_;
  Resources resources_;
  AskedPrograms asked_;
  FreeNumbers indexes_;
  HookCounts hookCounts_;
  HookObserver hookObserver_;
};

}  // namespace Chips
