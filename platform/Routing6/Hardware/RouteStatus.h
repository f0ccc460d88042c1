#pragma once

#include "Routing/Hardware/RouteStatusBase.h"
#include "Velo/Export.h"

namespace Routing6::Hardware {

/// The status of the IPv6 routes in the hardware.
class ZEL_EXPORT RouteStatus final : public Routing::Hardware::RouteStatusBase {
 public:
  static constexpr Mox::Type moxType{"Routing6::Hardware::RouteStatus"};

  [[nodiscard]] static Mox::Ptr<RouteStatus> RouteStatusIs() {
    return Mox::makeActivePtr<RouteStatus>();
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }
};

}  // namespace Routing6::Hardware
