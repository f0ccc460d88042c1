#pragma once

#include "PolicyMap/PolicyMapTypeConfig.h"

namespace TrafficPolicy {

/// The configured policy maps of traffic policies.
class [[gnu::visibility("default")]] TrafficPolicyConfig final
    : public PolicyMap::PolicyMapTypeConfig {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::TrafficPolicyConfig"};

  [[nodiscard]] static Mox::Ptr<TrafficPolicyConfig> TrafficPolicyConfigIs(
      const Velo::String& name) {
    return Mox::makeActivePtr<TrafficPolicyConfig>(name);
  }
  explicit TrafficPolicyConfig(const Velo::String& name) noexcept : PolicyMapTypeConfig(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace TrafficPolicy
