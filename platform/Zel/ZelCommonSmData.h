#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Zel {

/// The data that the state machines of the forwarding layer share.
class ZEL_EXPORT ZelCommonSmData final : public Mox::NamedEntity<ZelCommonSmData> {
 public:
  static constexpr Mox::Type moxType{"Zel::ZelCommonSmData"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<ZelCommonSmData> ZelCommonSmDataIs(const Velo::String& name) {
    return Mox::makeActivePtr<ZelCommonSmData>(name);
  }
};

}  // namespace Zel
