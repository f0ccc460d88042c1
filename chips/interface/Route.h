#pragma once

#include <cstdint>
#include <string>

#include "Ip/Prefix.h"

namespace Chips {

/// What happens to a packet whose destination a route covers. The interface is set for `egress`
/// and empty otherwise.
struct Route {
  enum class Kind : std::uint8_t { egress, drop, decap };
  Kind kind = Kind::drop;
  std::string intf;

  friend bool operator==(const Route&, const Route&) = default;
};

/// The route that a lookup found. `route` points into the table. It is valid until the table
/// changes.
struct RouteHit {
  Ip::Prefix prefix;
  const Route* route = nullptr;
  bool exactMatch = false;
};

}  // namespace Chips
