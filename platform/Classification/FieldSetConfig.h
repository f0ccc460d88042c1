#pragma once

#include "Mox/Entity.h"

namespace Classification {

/// Named sets of field values that rules match on.
class [[gnu::visibility("default")]] FieldSetConfig final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Classification::FieldSetConfig"};

  [[nodiscard]] static Mox::Ptr<FieldSetConfig> FieldSetConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<FieldSetConfig>(name);
  }
  explicit FieldSetConfig(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Classification
