#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Ip {

/// Addresses and state of IPv4 interfaces.
class ZEL_EXPORT Status final : public Mox::NamedEntity<Status> {
 public:
  static constexpr Mox::Type moxType{"Ip::Status"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Status> StatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<Status>(name);
  }
};

}  // namespace Ip
