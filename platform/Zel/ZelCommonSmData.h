#pragma once

#include "Mox/Entity.h"

namespace Zel {

/// What the state machines of the forwarding layer share.
class [[gnu::visibility("default")]] ZelCommonSmData final : public Mox::Entity {
 public:
  static constexpr Mox::Type moxType{"Zel::ZelCommonSmData"};

  [[nodiscard]] static Mox::Ptr<ZelCommonSmData> ZelCommonSmDataIs(const Velo::String& name) {
    return Mox::makeActivePtr<ZelCommonSmData>(name);
  }
  explicit ZelCommonSmData(const Velo::String& name) noexcept : Entity(name) {}
  [[nodiscard]] const Mox::Type* fwkType() const override {
    return &moxType;
  }
};

}  // namespace Zel
