#pragma once

#include "Mox/NotifieeConst.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

// The two reactors by which a VRF state machine follows the hardware route status. A notification
// does not tell an addition from a removal: the reactor looks the key up in the present state.
// The machine clears the reactor's way back to it before it goes. A reactor is also a follower of
// the route status, since the machine makes a nested one for each entity that enters.

/// Follows the IPv4 route status: VRF statuses, prefix lengths and decapsulation flags.
class VrfSm::MoxRoutingHwRouteStatus final
    : public Mox::PtrInterface::NotifieeConst,
      public Quarry::SlabAllocated<VrfSm::MoxRoutingHwRouteStatus> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfSm::MoxRoutingHwRouteStatus";

  MoxRoutingHwRouteStatus(const RouteStatusPtr& status, VrfSm* owner);
  ~MoxRoutingHwRouteStatus() override;
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;

  [[nodiscard]] RouteStatusPtr status() const noexcept;
  void ownerIs(VrfSm* owner) noexcept { owner_ = owner; }

 private:
  static void makeRoom(Velo::Follower* follower, short attributeId, const void* key,
                       const void* value);
  [[nodiscard]] bool isDeaf() const noexcept {
    return !notifier() || owner_ == nullptr || owner_->isPaused();
  }
  void followVrfStatus(const L3::VrfName& name);
  void followPrefixLens(const Velo::String& name);
  void followDecapNh(Mox::AttributeId attributeId);

  VrfSm* owner_;
  Velo::MemberFollower<MoxRoutingHwRouteStatus> follower_{*this, &makeRoom};
};

/// Follows the IPv6 route status: prefix lengths only.
class VrfSm::MoxRouting6HwRouteStatus final
    : public Mox::PtrInterface::NotifieeConst,
      public Quarry::SlabAllocated<VrfSm::MoxRouting6HwRouteStatus> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfSm::MoxRouting6HwRouteStatus";

  MoxRouting6HwRouteStatus(const RouteStatus6Ptr& status, VrfSm* owner);
  ~MoxRouting6HwRouteStatus() override;
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;

  [[nodiscard]] RouteStatus6Ptr status() const noexcept;
  void ownerIs(VrfSm* owner) noexcept { owner_ = owner; }

 private:
  static void makeRoom(Velo::Follower* follower, short attributeId, const void* key,
                       const void* value);
  [[nodiscard]] bool isDeaf() const noexcept {
    return !notifier() || owner_ == nullptr || owner_->isPaused();
  }

  VrfSm* owner_;
  Velo::MemberFollower<MoxRouting6HwRouteStatus> follower_{*this, &makeRoom};
};

}  // namespace ZelVrfSelectionPolicy
