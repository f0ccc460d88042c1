#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Ip6 {

/// The IPv6 configuration.
class ZEL_EXPORT Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Ip6::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Ip6
