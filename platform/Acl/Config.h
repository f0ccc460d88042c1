#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Acl {

/// The configured access lists.
class ZEL_EXPORT Config final : public Mox::NamedEntity<Config> {
 public:
  static constexpr Mox::Type moxType{"Acl::Config"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Config> ConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<Config>(name);
  }
};

}  // namespace Acl
