#pragma once

#include "Mox/NamedEntity.h"

namespace Zel {

/// What became of the next-hop groups that the forwarding layer asked for.
class [[gnu::visibility("default")]] NexthopGroupStatus final
    : public Mox::NamedEntity<NexthopGroupStatus> {
 public:
  static constexpr Mox::Type moxType{"Zel::NexthopGroupStatus"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<NexthopGroupStatus> NexthopGroupStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<NexthopGroupStatus>(name);
  }
};

}  // namespace Zel
