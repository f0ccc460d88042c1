#pragma once

#include "Mox/Entity.h"

namespace Ip6 {

/// Addresses and state of IPv6 interfaces.
class [[gnu::visibility("default")]] Status final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Ip6::Status"};

  [[nodiscard]] static Mox::Ptr<Status> StatusIs(const Velo::String& name) {
    return Mox::makeActivePtr<Status>(name);
  }
  explicit Status(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Ip6
