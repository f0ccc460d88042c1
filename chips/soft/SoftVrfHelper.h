// Why: the library drives a chip through three hooks. This chip is software: it needs no hardware,
// shows all that it was told, and fails on request, so agents and tests run on it.
// Always: an action has at most one resource and a resource one action; there are never more
// resources than the capacity was when the last of them was made; deleteVrf leaves nothing of the
// action behind.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <map>
#include <utility>

#include "ZelVrfSelectionPolicy/tables/VrfHelper.h"
#include "chips/soft/FaultPlan.h"
#include "chips/soft/FreeNumbers.h"
#include "chips/soft/HookCall.h"
#include "chips/soft/VrfProgram.h"

namespace SoftChip {

// One entry of the chip's table.
struct VrfResource {
  std::uint32_t index = 0;  // the lowest that was free, from 1
  VrfProgram program;

  friend bool operator==(const VrfResource&, const VrfResource&) = default;
};

// In full, for example "resource 1: look up red(2) v4=[] v6=[]; ..." (on one line). Beside the
// program that the chip would make now it shows what of a stale resource is stale.
std::ostream& operator<<(std::ostream& stream, const VrfResource& resource);

// How often each hook was called, and how many of the calls reported a failure.
struct HookCounts {
  std::uint64_t creates = 0;
  std::uint64_t updates = 0;
  std::uint64_t deletes = 0;
  std::uint64_t failures = 0;

  friend bool operator==(const HookCounts&, const HookCounts&) = default;
};

// The outcomes of creating and updating, of which the first that applies holds:
//
//   a planned fault                                  failureVrfResourceAlloc; the resource, if
//                                                    there is one, keeps its old program
//   a VRF that the action names has no hardware id   failureVrfResourceAlloc; the resource, if
//                                                    there was one, is released
//   the table is full                                failureVrfResourceExhausted
//   otherwise                                        programmedInHw
//
// A failed creation needs no cleaning up: an update of an action that has no resource tries to make
// one.
class SoftVrfHelper final : public ZelVrfSelectionPolicy::VrfHelper {
 public:
  using VrfAction = ZelVrfSelectionPolicy::VrfAction;
  using HwStatus = ZelVrfSelectionPolicy::HwStatus;
  using Resources = std::map<VrfAction, VrfResource>;

  SoftVrfHelper(const Velo::String& name, const ProgramInputs& inputs, std::uint32_t capacity);
  ~SoftVrfHelper() override;

  [[nodiscard]] HwStatus createVrf(const VrfAction& action) override;
  [[nodiscard]] HwStatus updateVrf(const VrfAction& action) override;
  void deleteVrf(const VrfAction& action) override;

  [[nodiscard]] std::uint32_t capacity() const noexcept { return capacity_; }
  // A capacity below the number of resources takes none away; it only admits no more.
  void capacityIs(std::uint32_t capacity) noexcept { capacity_ = capacity; }

  [[nodiscard]] FaultPlan& faultPlan() noexcept { return faultPlan_; }

  [[nodiscard]] const Resources& resources() const noexcept { return resources_; }
  // The resource of the action, or null.
  [[nodiscard]] const VrfResource* resource(const VrfAction& action) const;
  // What the resource of the action would be programmed with now.
  [[nodiscard]] VrfProgram currentProgram(const VrfAction& action) const;
  [[nodiscard]] const HookCounts& hookCounts() const noexcept { return hookCounts_; }
  // Is told of each call of a hook when the hook is done, in place of whoever was told before. An
  // empty one ends it.
  void hookObserverIs(HookObserver observer) { hookObserver_ = std::move(observer); }

 private:
  HwStatus program(Hook hook, const VrfAction& action);
  HwStatus programNow(const VrfAction& action);
  void release(const VrfAction& action);
  void tell(const HookCall& call) const;

  std::uint32_t capacity_;
  FaultPlan faultPlan_;
  Resources resources_;
  FreeNumbers indexes_;
  HookCounts hookCounts_;
  HookObserver hookObserver_;
};

}  // namespace SoftChip
