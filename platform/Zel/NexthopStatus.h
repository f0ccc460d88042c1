#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Zel {

/// What became of the next hops that the forwarding layer asked for.
class ZEL_EXPORT NexthopStatus final : public Mox::NamedEntity<NexthopStatus> {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopStatus"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<NexthopStatus> NexthopStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopStatus>(name);
  }
};

}  // namespace Zel
