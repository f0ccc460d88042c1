#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Lag::Input {

/// The configured link aggregation groups.
class ZEL_EXPORT Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Lag::Input::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Lag::Input
