#pragma once

#include "Routing/Hardware/RouteStatusBase.h"
#include "Velo/Export.h"

namespace Routing::Hardware {

/// The status of the IPv4 routes in the hardware.
class ZEL_EXPORT RouteStatus final : public Routing::Hardware::RouteStatusBase {
 public:
  static constexpr Mox::Type moxType{"Routing::Hardware::RouteStatus"};

  [[nodiscard]] static Mox::Ptr<RouteStatus> RouteStatusIs() {
    return Mox::makeActivePtr<RouteStatus>();
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }
};

}  // namespace Routing::Hardware
