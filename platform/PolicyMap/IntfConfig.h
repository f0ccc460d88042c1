#pragma once

#include "Mox/Entity.h"

namespace PolicyMap {

/// Which policy map is applied to which interface.
class [[gnu::visibility("default")]] IntfConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::IntfConfig"};

  [[nodiscard]] static Mox::Ptr<IntfConfig> IntfConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<IntfConfig>(name);
  }
  explicit IntfConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace PolicyMap
