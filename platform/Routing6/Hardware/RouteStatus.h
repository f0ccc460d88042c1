#pragma once

#include "Routing/Hardware/RouteStatusBase.h"
#include "Velo/Export.h"

namespace Routing6::Hardware {

/// What the hardware knows of the IPv6 routes.
class ZEL_EXPORT RouteStatus final : public Routing::Hardware::RouteStatusBase {
 public:
  static constexpr Mox::Type moxType{"Routing6::Hardware::RouteStatus"};

  [[nodiscard]] static Mox::Ptr<RouteStatus> RouteStatusIs() {
    return Mox::makeActivePtr<RouteStatus>();
  }
  [[nodiscard]] const Mox::Type* fwkType() const override { return &moxType; }
};

}  // namespace Routing6::Hardware
