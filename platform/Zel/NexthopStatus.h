#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Zel {

/// The status of the requested next hops.
class ZEL_EXPORT NexthopStatus final : public Mox::NamedEntity<NexthopStatus> {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopStatus"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<NexthopStatus> NexthopStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopStatus>(name);
  }
};

}  // namespace Zel
