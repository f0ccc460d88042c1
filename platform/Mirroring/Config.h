#pragma once

#include "Mox/NamedEntity.h"

namespace Mirroring {

/// The configured mirroring sessions.
class [[gnu::visibility("default")]] Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Mirroring::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Mirroring
