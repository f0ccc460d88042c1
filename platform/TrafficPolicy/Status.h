#pragma once

#include "PolicyMap/PolicyMapTypeStatus.h"

namespace TrafficPolicy {

/// What became of the policy maps of traffic policies.
class [[gnu::visibility("default")]] Status final : public PolicyMap::PolicyMapTypeStatus {
 public:
  static constexpr Mox::Type moxType{"TrafficPolicy::Status"};

  [[nodiscard]] static Mox::Ptr<Status> StatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<Status>(name);
  }
  explicit Status(const Velo::String& name) noexcept : PolicyMapTypeStatus(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace TrafficPolicy
