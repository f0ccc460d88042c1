#pragma once

#include "Mox/Entity.h"

namespace TrafficPolicy {

/// What the hardware can do for traffic policies.
class [[gnu::visibility("default")]] HwStatus final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::HwStatus"};

  [[nodiscard]] static Mox::Ptr<HwStatus> HwStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<HwStatus>(name);
  }
  explicit HwStatus(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace TrafficPolicy
