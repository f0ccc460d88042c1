#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Classification {

/// The configured user-defined fields of packets.
class ZEL_EXPORT UdfConfig final : public Mox::NamedEntity<UdfConfig> {
 public:
  static constexpr Mox::Type moxType{"Classification::UdfConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<UdfConfig> UdfConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<UdfConfig>(name);
  }
};

}  // namespace Classification
