#pragma once

#include "Mox/Entity.h"

namespace PolicyMap {

/// Requests for the status of policy maps.
class [[gnu::visibility("default")]] PolicyMapStatusRequestDir final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapStatusRequestDir"};

  [[nodiscard]] static Mox::Ptr<PolicyMapStatusRequestDir> PolicyMapStatusRequestDirIs(
      const Velo::String& name) {
    return Mox::makeActivePtr<PolicyMapStatusRequestDir>(name);
  }
  explicit PolicyMapStatusRequestDir(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace PolicyMap
