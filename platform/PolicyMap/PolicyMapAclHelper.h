#pragma once

#include "Mox/Entity.h"

namespace PolicyMap {

/// The way to the chip's classification hardware.
class [[gnu::visibility("default")]] PolicyMapAclHelper final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapAclHelper"};

  [[nodiscard]] static Mox::Ptr<PolicyMapAclHelper> PolicyMapAclHelperIs(const Velo::String& name) {
    return Mox::makeActivePtr<PolicyMapAclHelper>(name);
  }
  explicit PolicyMapAclHelper(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace PolicyMap
