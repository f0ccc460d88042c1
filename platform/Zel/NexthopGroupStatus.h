#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Zel {

/// The status of the requested next-hop groups.
class ZEL_EXPORT NexthopGroupStatus final : public Mox::NamedEntity<NexthopGroupStatus> {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopGroupStatus"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<NexthopGroupStatus> NexthopGroupStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopGroupStatus>(name);
  }
};

}  // namespace Zel
