#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Zel {

/// The next-hop groups that the forwarding layer requests.
class ZEL_EXPORT NexthopGroupConfig final : public Mox::NamedEntity<NexthopGroupConfig> {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopGroupConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<NexthopGroupConfig> NexthopGroupConfigIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopGroupConfig>(name);
  }
};

}  // namespace Zel
