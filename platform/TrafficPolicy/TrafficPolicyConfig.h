#pragma once

#include "Mox/NamedEntity.h"
#include "PolicyMap/PolicyMapTypeConfig.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The configured policy maps of traffic policies.
class ZEL_EXPORT TrafficPolicyConfig final
    : public Mox::NamedEntity<TrafficPolicyConfig, PolicyMap::PolicyMapTypeConfig> {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::TrafficPolicyConfig"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<TrafficPolicyConfig> TrafficPolicyConfigIs(
      const Velo::String& name) {
    return Mox::makeActivePtr<TrafficPolicyConfig>(name);
  }
};

}  // namespace TrafficPolicy
