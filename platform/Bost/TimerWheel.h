#pragma once

#include "Mox/Entity.h"

namespace Bost {

/// The timers of the event loop.
class [[gnu::visibility("default")]] TimerWheel final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Bost::TimerWheel"};

  [[nodiscard]] static Mox::Ptr<TimerWheel> TimerWheelIs(const Velo::String& name) {
    return Mox::makeActivePtr<TimerWheel>(name);
  }
  explicit TimerWheel(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Bost
