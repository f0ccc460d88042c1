#pragma once

#include "Mox/NamedEntity.h"
#include "Velo/Export.h"

namespace Bost {

/// The timers of the event loop.
class ZEL_EXPORT TimerWheel final : public Mox::NamedEntity<TimerWheel> {
 public:
  static constexpr Mox::Type moxType{"Bost::TimerWheel"};

  using NamedEntity::NamedEntity;
  [[nodiscard]] static Mox::Ptr<TimerWheel> TimerWheelIs(const Velo::String& name) {
    return Mox::makeActivePtr<TimerWheel>(name);
  }
};

}  // namespace Bost
