#pragma once

#include "Mox/NamedEntity.h"

namespace Classification {

/// Named sets of field values that rules match on.
class [[gnu::visibility("default")]] FieldSetConfig final
    : public Mox::NamedEntity<FieldSetConfig> {
 public:
  static constexpr Mox::Type moxType{"Classification::FieldSetConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<FieldSetConfig> FieldSetConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<FieldSetConfig>(name);
  }
};

}  // namespace Classification
