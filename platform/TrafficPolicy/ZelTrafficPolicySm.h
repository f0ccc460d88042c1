#pragma once

#include "Mox/Ptr.h"
#include "PolicyMap/ServicePolicySm.h"

namespace TrafficPolicy {

/// The traffic-policy state machine of the forwarding layer.
class [[gnu::visibility("default")]] ZelTrafficPolicySm final : public PolicyMap::ServicePolicySm {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::ZelTrafficPolicySm"};
  /// Number of the attribute `ready`.
  static constexpr Mox::AttributeId readyAttribute = 283;

  [[nodiscard]] static Mox::Ptr<ZelTrafficPolicySm> ZelTrafficPolicySmIs();
  [[nodiscard]] const Mox::Type* fwkType() const override;

  /// Whether the hardware holds what is configured.
  [[nodiscard]] bool ready() const noexcept {
    return ready_;
  }
  /// Publishes a change of `ready`.
  void readyIs(bool ready);

 private:
  bool ready_ = false;
};

}  // namespace TrafficPolicy
