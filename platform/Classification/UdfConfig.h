#pragma once

#include "Mox/Entity.h"

namespace Classification {

/// The configured user-defined fields of packets.
class [[gnu::visibility("default")]] UdfConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Classification::UdfConfig"};

  [[nodiscard]] static Mox::Ptr<UdfConfig> UdfConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<UdfConfig>(name);
  }
  explicit UdfConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Classification
