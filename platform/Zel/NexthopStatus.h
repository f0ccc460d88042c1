#pragma once

#include "Mox/Entity.h"

namespace Zel {

/// What became of the next hops that the forwarding layer asked for.
class [[gnu::visibility("default")]] NexthopStatus final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopStatus"};

  [[nodiscard]] static Mox::Ptr<NexthopStatus> NexthopStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopStatus>(name);
  }
  explicit NexthopStatus(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Zel
