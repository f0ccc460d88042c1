#pragma once

#include "Mox/NamedEntity.h"

namespace Acl {

/// The configured access lists.
class [[gnu::visibility("default")]] Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Acl::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Acl
