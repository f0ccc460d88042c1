#pragma once

#include "Mox/NamedEntity.h"

namespace Sflow {

/// The interfaces whose traffic is sampled.
class [[gnu::visibility("default")]] InterfaceCollector final
    : public Mox::NamedEntity<InterfaceCollector> {
 public:
  static constexpr Mox::Type moxType{"Sflow::InterfaceCollector"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<InterfaceCollector> InterfaceCollectorIs(const Velo::String& name) {
    return Mox::makeActivePtr<InterfaceCollector>(name);
  }
};

}  // namespace Sflow
