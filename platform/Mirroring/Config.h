#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Mirroring {

/// The configured mirroring sessions.
class ZEL_EXPORT Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Mirroring::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Mirroring
