#pragma once

#include "Mox/NamedEntity.h"

namespace Classification {

/// The configured user-defined fields of packets.
class [[gnu::visibility("default")]] UdfConfig final : public Mox::NamedEntity<UdfConfig> {
 public:
  static constexpr Mox::Type moxType{"Classification::UdfConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<UdfConfig> UdfConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<UdfConfig>(name);
  }
};

}  // namespace Classification
