#pragma once

#include "Mox/NotifieeConst.h"
#include "Velo/Export.h"
#include "ZelVrfSelectionPolicy/vrf/VrfSm.h"

namespace ZelVrfSelectionPolicy {

/// The two reactors of a VRF state machine to the hardware route status. A notification does not
/// distinguish an addition from a removal, so the reactor reads the present entry of the key. The
/// machine resets the reactor's pointer to it before it is destroyed.

/// Follows the IPv4 route status: VRF statuses, prefix lengths and decapsulation flags.
class ZEL_HIDDEN VrfSm::MoxRoutingHwRouteStatus final
    : public Mox::PtrInterface::NotifieeConst,
      public Quarry::SlabAllocated<VrfSm::MoxRoutingHwRouteStatus> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfSm::MoxRoutingHwRouteStatus";

  MoxRoutingHwRouteStatus(const RouteStatusPtr& status, VrfSm* owner);
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;

  [[nodiscard]] RouteStatusPtr status() const noexcept;
  void ownerIs(VrfSm* owner) noexcept { owner_ = owner; }

 private:
  void followVrfStatus(const L3::VrfName& name);
  void followPrefixLens(const Velo::String& name);
  void followDecapNh(Mox::AttributeId attributeId);

  VrfSm* owner_;
};

/// Follows the IPv6 route status: prefix lengths only.
class ZEL_HIDDEN VrfSm::MoxRouting6HwRouteStatus final
    : public Mox::PtrInterface::NotifieeConst,
      public Quarry::SlabAllocated<VrfSm::MoxRouting6HwRouteStatus> {
 public:
  static constexpr const char* typeName = "ZelVrfSelectionPolicy::VrfSm::MoxRouting6HwRouteStatus";

  MoxRouting6HwRouteStatus(const RouteStatus6Ptr& status, VrfSm* owner);
  void onAttribute(Mox::AttributeId attributeId, const void* key) override;

  [[nodiscard]] RouteStatus6Ptr status() const noexcept;
  void ownerIs(VrfSm* owner) noexcept { owner_ = owner; }

 private:
  VrfSm* owner_;
};

}  // namespace ZelVrfSelectionPolicy
