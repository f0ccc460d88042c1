#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Zel {

/// The next hops that the forwarding layer requests.
class ZEL_EXPORT NexthopConfig final : public Mox::NamedEntity<NexthopConfig> {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<NexthopConfig> NexthopConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopConfig>(name);
  }
};

}  // namespace Zel
