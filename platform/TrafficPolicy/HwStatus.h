#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace TrafficPolicy {

/// The capabilities of the hardware for traffic policies.
class ZEL_EXPORT HwStatus final : public Mox::NamedEntity<HwStatus> {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::HwStatus"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<HwStatus> HwStatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<HwStatus>(name);
  }
};

}  // namespace TrafficPolicy
