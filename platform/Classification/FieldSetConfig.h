#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Classification {

/// Named sets of field values that rules match on.
class ZEL_EXPORT FieldSetConfig final : public Mox::NamedEntity<FieldSetConfig> {
 public:
  static constexpr Mox::Type moxType{"Classification::FieldSetConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<FieldSetConfig> FieldSetConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<FieldSetConfig>(name);
  }
};

}  // namespace Classification
