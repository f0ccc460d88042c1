#pragma once

#include "Mox/Entity.h"

namespace Sflow {

/// The interfaces whose traffic is sampled.
class [[gnu::visibility("default")]] InterfaceCollector final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Sflow::InterfaceCollector"};

  [[nodiscard]] static Mox::Ptr<InterfaceCollector> InterfaceCollectorIs(const Velo::String& name) {
    return Mox::makeActivePtr<InterfaceCollector>(name);
  }
  explicit InterfaceCollector(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Sflow
