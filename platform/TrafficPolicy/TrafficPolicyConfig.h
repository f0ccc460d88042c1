#pragma once

#include "Mox/Entity.h"

namespace TrafficPolicy {

/// The configured policy maps and class maps.
class [[gnu::visibility("default")]] TrafficPolicyConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::TrafficPolicyConfig"};

  [[nodiscard]] static Mox::Ptr<TrafficPolicyConfig> TrafficPolicyConfigIs(
      const Velo::String& name) {
    return Mox::makeActivePtr<TrafficPolicyConfig>(name);
  }
  explicit TrafficPolicyConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace TrafficPolicy
