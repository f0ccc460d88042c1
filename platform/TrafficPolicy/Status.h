#pragma once

#include "Mox/NamedEntity.h"
#include "PolicyMap/PolicyMapTypeStatus.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The status of the policy maps of traffic policies.
class ZEL_EXPORT Status final : public Mox::NamedEntity<Status, PolicyMap::PolicyMapTypeStatus> {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::Status"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<Status> StatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<Status>(name);
  }
};

}  // namespace TrafficPolicy
