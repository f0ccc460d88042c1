#pragma once

#include "Mox/Entity.h"

namespace Zel {

/// The next hops that the forwarding layer asks for.
class [[gnu::visibility("default")]] NexthopConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopConfig"};

  [[nodiscard]] static Mox::Ptr<NexthopConfig> NexthopConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopConfig>(name);
  }
  explicit NexthopConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Zel
