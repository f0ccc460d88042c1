#pragma once

#include "Mox/NamedEntity.h"

namespace Ip6 {

/// The IPv6 configuration.
class [[gnu::visibility("default")]] Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Ip6::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Ip6
