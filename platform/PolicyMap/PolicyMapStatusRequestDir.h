#pragma once

#include "Mox/NamedEntity.h"

namespace PolicyMap {

/// Requests for the status of policy maps.
class [[gnu::visibility("default")]] PolicyMapStatusRequestDir final
    : public Mox::NamedEntity<PolicyMapStatusRequestDir> {
 public:
  static constexpr Mox::Type moxType{"PolicyMap::PolicyMapStatusRequestDir"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<PolicyMapStatusRequestDir> PolicyMapStatusRequestDirIs(
      const Velo::String& name) {
    return Mox::makeActivePtr<PolicyMapStatusRequestDir>(name);
  }
};

}  // namespace PolicyMap
