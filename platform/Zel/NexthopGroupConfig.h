#pragma once

#include "Mox/Entity.h"

namespace Zel {

/// The next-hop groups that the forwarding layer asks for.
class [[gnu::visibility("default")]] NexthopGroupConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopGroupConfig"};

  [[nodiscard]] static Mox::Ptr<NexthopGroupConfig> NexthopGroupConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopGroupConfig>(name);
  }
  explicit NexthopGroupConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Zel
