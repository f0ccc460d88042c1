#pragma once

#include "Mox/Entity.h"

namespace Mirroring {

/// The configured mirroring sessions.
class [[gnu::visibility("default")]] Config final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Mirroring::Config"};

  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
  explicit Config(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Mirroring
