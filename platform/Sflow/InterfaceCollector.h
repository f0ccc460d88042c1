#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Sflow {

/// The interfaces whose traffic is sampled.
class ZEL_EXPORT InterfaceCollector final : public Mox::NamedEntity<InterfaceCollector> {
 public:
  static constexpr Mox::Type moxType{"Sflow::InterfaceCollector"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<InterfaceCollector> InterfaceCollectorIs(const Velo::String& name) {
    return Mox::makeActivePtr<InterfaceCollector>(name);
  }
};

}  // namespace Sflow
