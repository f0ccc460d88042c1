#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace PolicyMap {

/// Requests for the status of policy maps.
class ZEL_EXPORT PolicyMapStatusRequestDir final
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
