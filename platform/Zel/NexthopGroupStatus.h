#pragma once

#include "Mox/Entity.h"

namespace Zel {

/// What became of the next-hop groups that the forwarding layer asked for.
class [[gnu::visibility("default")]] NexthopGroupStatus final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopGroupStatus"};

  [[nodiscard]] static Mox::Ptr<NexthopGroupStatus> NexthopGroupStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopGroupStatus>(name);
  }
  explicit NexthopGroupStatus(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Zel
