// Why: who asks where a packet goes also wants to see which route sends it there.
// Always: the route is valid until the tables change.
#pragma once

#include "Ip/Prefix.h"
#include "chips/soft/Route.h"

namespace SoftChip {

struct RouteHit {
  Ip::Prefix prefix;
  const Route* route = nullptr;
  bool exactMatch = false;
};

}  // namespace SoftChip
